// The shared Gaussian: its integer taps, the copy threshold, edge
// normalisation, agreement with a plain 64-bit integer blur for any number of
// workers, strides and stopping. The 32-bit form's exact output is pinned in
// KernelDigest_test.
#include "modules/common/GaussianBlur.h"

#include "ModuleTestImages.h"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <string>
#include <vector>

namespace {

// The blur written the obvious way, in 64-bit integers, as the reference.
std::vector<int64_t> ReferenceBlur(const std::vector<int64_t>& in, int32_t w, int32_t h, double r) {
    const GaussianKernel k = GaussianBlur_MakeKernel(r);
    if (k.half == 0) return in;
    // Rows first, then columns; at the edges only the taps inside the plane count.
    std::vector<int64_t> out = in;
    for (const bool columns : {false, true}) {
        const std::vector<int64_t> from = out;
        for (int32_t y = 0; y < h; ++y)
            for (int32_t x = 0; x < w; ++x) {
                int64_t s = 0, ws = 0;
                for (int32_t d = -k.half; d <= k.half; ++d) {
                    const int32_t at = (columns ? y : x) + d;
                    if (at < 0 || at >= (columns ? h : w)) continue;
                    s += k.weights[size_t(d + k.half)] * from[size_t(columns ? at * w + x : y * w + at)];
                    ws += k.weights[size_t(d + k.half)];
                }
                out[size_t(y * w + x)] = s / ws;
            }
    }
    return out;
}

// `base` plus pseudo-random samples below `range`.
std::vector<int64_t> RandomPlane(int32_t w, int32_t h, int64_t base, int64_t range, uint64_t seed) {
    std::vector<int64_t> p(size_t(w) * size_t(h));
    for (size_t i = 0; i < p.size(); ++i)
        p[i] = base + static_cast<int64_t>(TestHash(seed + i) % uint64_t(range));
    return p;
}

}  // namespace

TEST(GaussianBlurKernel, TapsAndThePlainCopyThreshold) {
    // The weight at k = 1 is 2^(-1/r^2): at or below 1/4096 up to r = 1/sqrt(12) = 0.28868,
    // where there is one tap and the blur is a plain copy.
    const struct {
        double r;
        int32_t half;
        std::vector<int32_t> weights;
    } cases[] = {
        {0.0, 0, {}},
        {0.1, 0, {}},
        {0.28867, 0, {}},
        {0.2887, 1, {0, 256, 0}},  // side taps that truncate to 0: values come out unchanged
        {0.2888, 1, {0, 256, 0}},
        {0.5, 1, {16, 256, 16}},
        // r = 2: weight 2^(-k^2/4) is above 2^-12 up to k = 6; 256 * 2^-0.25 truncates to 215.
        {2.0, 6, {0, 3, 16, 53, 128, 215, 256, 215, 128, 53, 16, 3, 0}},
    };
    for (const auto& c : cases) {
        const GaussianKernel k = GaussianBlur_MakeKernel(c.r);
        EXPECT_EQ(k.half, c.half) << c.r;
        EXPECT_EQ(k.weights, c.weights) << c.r;
    }
}

// Exactly the plain blur, whatever the worker count (at the edges it weighs
// only the taps inside the plane): constants stay constant,
// below the threshold it is a copy, planes narrower than the kernel are all
// edge, negative samples truncate towards zero, and samples beyond the double
// range take the integer path.
TEST(GaussianBlurPlane, MatchesThePlainIntegerBlur) {
    struct Case {
        int32_t w, h;
        double r;
        int64_t base, range;
        uint64_t seed;
        bool negateEveryThird;
        int workers;  // 0: as many as processors
    } cases[] = {
        {37, 23, 0.5, 123456789, 1, 0, false, 0},
        {37, 23, 2.0, 123456789, 1, 0, false, 0},
        {37, 23, 7.5, 123456789, 1, 0, false, 0},
        {19, 7, 0.25, 0, int64_t{1} << 30, 5, false, 0},
        {61, 47, 0.5, 0, int64_t{1} << 30, 50, false, 0},
        {61, 47, 1.3, 0, int64_t{1} << 30, 130, false, 0},
        {61, 47, 2.0, 0, int64_t{1} << 30, 200, false, 0},
        {61, 47, 6.0, 0, int64_t{1} << 30, 600, false, 0},
        {3, 40, 4.0, 0, int64_t{1} << 30, 77, false, 0},
        {40, 5, 4.0, 0, int64_t{1} << 30, 78, false, 7},  // more workers than rows
        {50, 31, 2.5, 0, int64_t{1} << 30, 9, false, 1},
        {50, 31, 2.5, 0, int64_t{1} << 30, 9, false, 5},
        {23, 19, 1.5, 0, int64_t{1} << 20, 12, true, 0},
        {17, 13, 2.0, 0, int64_t{1} << 50, 3, false, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.w << "x" << c.h << ", r = " << c.r << ", seed " << c.seed << ", "
                                        << c.workers << " workers");
        std::vector<int64_t> in = RandomPlane(c.w, c.h, c.base, c.range, c.seed), out(in.size(), -1);
        if (c.negateEveryThird)
            for (size_t i = 0; i < in.size(); i += 3) in[i] = -in[i];
        std::optional<EnvScope> workers;
        if (c.workers) workers.emplace("PELLUCIDA_WORKERS", std::to_string(c.workers));
        EXPECT_TRUE(GaussianBlur(in.data(), out.data(), c.w, c.h, c.w, c.r, nullptr));
        EXPECT_EQ(out, ReferenceBlur(in, c.w, c.h, c.r));
    }
}

TEST(GaussianBlurPlane, HonoursStrideAndStops) {
    // Stride wider than the width: the padding is neither read into the
    // result nor written.
    const int32_t w = 9, h = 6, stride = 12;
    std::vector<int64_t> in(size_t(stride * h), 1 << 20), out(size_t(stride * h), -7);
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = w; x < stride; ++x) in[size_t(y * stride + x)] = int64_t{1} << 40;
    ASSERT_TRUE(GaussianBlur(in.data(), out.data(), w, h, stride, 1.5, nullptr));
    for (int32_t y = 0; y < h; ++y) {
        for (int32_t x = 0; x < w; ++x) EXPECT_EQ(out[size_t(y * stride + x)], 1 << 20);
        for (int32_t x = w; x < stride; ++x) EXPECT_EQ(out[size_t(y * stride + x)], -7);
    }
    std::atomic<bool> cancel{true};
    const KernelControl control{.cancel = &cancel};
    EXPECT_FALSE(GaussianBlur(in.data(), out.data(), w, h, stride, 1.5, &control));
}
