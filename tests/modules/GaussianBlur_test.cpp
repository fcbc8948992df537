// The shared Gaussian: its integer taps, the copy threshold, edge
// normalisation, agreement with a plain 64-bit integer blur and independence
// from the number of workers.
#include "modules/common/GaussianBlur.h"

#include "ModuleTestImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <vector>

namespace {

// The blur written the obvious way, in 64-bit integers, as the reference.
std::vector<int64_t> ReferenceBlur(const std::vector<int64_t>& in, int32_t w, int32_t h, double r) {
    const GaussianKernel k = GaussianBlur_MakeKernel(r);
    if (k.half == 0) return in;
    std::vector<int64_t> tmp(in.size()), out(in.size());
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) {
            int64_t s = 0, ws = 0;
            for (int32_t d = -k.half; d <= k.half; ++d)
                if (x + d >= 0 && x + d < w) {
                    s += k.weights[size_t(d + k.half)] * in[size_t(y * w + x + d)];
                    ws += k.weights[size_t(d + k.half)];
                }
            tmp[size_t(y * w + x)] = s / ws;
        }
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) {
            int64_t s = 0, ws = 0;
            for (int32_t d = -k.half; d <= k.half; ++d)
                if (y + d >= 0 && y + d < h) {
                    s += k.weights[size_t(d + k.half)] * tmp[size_t((y + d) * w + x)];
                    ws += k.weights[size_t(d + k.half)];
                }
            out[size_t(y * w + x)] = s / ws;
        }
    return out;
}

std::vector<int64_t> RandomPlane(int32_t w, int32_t h, int64_t range, uint64_t seed) {
    std::vector<int64_t> p(size_t(w) * size_t(h));
    for (size_t i = 0; i < p.size(); ++i) p[i] = static_cast<int64_t>(TestHash(seed + i) % uint64_t(range));
    return p;
}

std::vector<int64_t> Blur(const std::vector<int64_t>& in, int32_t w, int32_t h, double r) {
    std::vector<int64_t> out(in.size(), -1);
    EXPECT_TRUE(GaussianBlur(in.data(), out.data(), w, h, w, r, nullptr));
    return out;
}

}  // namespace

TEST(GaussianBlurKernel, HalfWidthOneHalfGivesTapsSixteenTwoFiftySixSixteen) {
    const GaussianKernel k = GaussianBlur_MakeKernel(0.5);
    EXPECT_EQ(k.half, 1);
    EXPECT_EQ(k.weights, (std::vector<int32_t>{16, 256, 16}));
}

TEST(GaussianBlurKernel, PlainCopyOnlyUpToTheThreshold) {
    // The weight at k = 1 is 2^(-1/r^2): at or below 1/4096 up to r = 1/sqrt(12) = 0.28868.
    EXPECT_EQ(GaussianBlur_MakeKernel(0.28867).half, 0);
    EXPECT_EQ(GaussianBlur_MakeKernel(0.1).half, 0);
    EXPECT_EQ(GaussianBlur_MakeKernel(0.0).half, 0);
    EXPECT_EQ(GaussianBlur_MakeKernel(0.2887).half, 1);
    EXPECT_EQ(GaussianBlur_MakeKernel(0.2888).half, 1);
    // Just above, the side taps still truncate to 0: the values come out unchanged.
    EXPECT_EQ(GaussianBlur_MakeKernel(0.2888).weights, (std::vector<int32_t>{0, 256, 0}));
}

TEST(GaussianBlurKernel, TapsEndWhereTheWeightFallsToOneIn4096) {
    // r = 2: weight 2^(-k^2/4) is above 2^-12 up to k = 6.
    const GaussianKernel k = GaussianBlur_MakeKernel(2.0);
    EXPECT_EQ(k.half, 6);
    EXPECT_EQ(k.weights[6], 256);
    EXPECT_EQ(k.weights[5], 215);  // trunc(256 * 2^-0.25)
    EXPECT_EQ(k.weights[0], k.weights[12]);
}

TEST(GaussianBlurPlane, ThreeTapsAtTheEdgesAreNormalisedByTheTapsInside) {
    // One row: the first sample sees weights 256 and 16 only.
    const std::vector<int64_t> in = {1000, 0, 0, 0, 5000};
    const std::vector<int64_t> out = Blur(in, 5, 1, 0.5);
    EXPECT_EQ(out[0], (256 * 1000) / 272);
    EXPECT_EQ(out[1], (16 * 1000) / 288);
    EXPECT_EQ(out[2], 0);
    EXPECT_EQ(out[3], (16 * 5000) / 288);
    EXPECT_EQ(out[4], (256 * 5000) / 272);
}

TEST(GaussianBlurPlane, ConstantStaysConstant) {
    const std::vector<int64_t> in(37 * 23, 123456789);
    for (double r : {0.5, 2.0, 7.5}) EXPECT_EQ(Blur(in, 37, 23, r), in) << "r = " << r;
}

TEST(GaussianBlurPlane, BelowTheThresholdIsACopy) {
    const std::vector<int64_t> in = RandomPlane(19, 7, 1 << 30, 5);
    EXPECT_EQ(Blur(in, 19, 7, 0.25), in);
}

TEST(GaussianBlurPlane, MatchesThePlainIntegerBlur) {
    for (double r : {0.5, 1.3, 2.0, 6.0}) {
        const std::vector<int64_t> in = RandomPlane(61, 47, int64_t{1} << 30, uint64_t(r * 100));
        EXPECT_EQ(Blur(in, 61, 47, r), ReferenceBlur(in, 61, 47, r)) << "r = " << r;
    }
    // Narrower than the kernel: every pixel is an edge pixel.
    const std::vector<int64_t> thin = RandomPlane(3, 40, int64_t{1} << 30, 77);
    EXPECT_EQ(Blur(thin, 3, 40, 4.0), ReferenceBlur(thin, 3, 40, 4.0));
    // Fewer rows than the kernel spans, over more workers than rows.
    WorkerCountScope workers(7);
    const std::vector<int64_t> flat = RandomPlane(40, 5, int64_t{1} << 30, 78);
    EXPECT_EQ(Blur(flat, 40, 5, 4.0), ReferenceBlur(flat, 40, 5, 4.0));
}

TEST(GaussianBlurPlane, NegativeSamplesTruncateTowardsZero) {
    std::vector<int64_t> in = RandomPlane(23, 19, int64_t{1} << 20, 12);
    for (size_t i = 0; i < in.size(); i += 3) in[i] = -in[i];
    EXPECT_EQ(Blur(in, 23, 19, 1.5), ReferenceBlur(in, 23, 19, 1.5));
}

TEST(GaussianBlurPlane, SamplesBeyondTheDoubleRangeTakeTheIntegerPath) {
    const std::vector<int64_t> in = RandomPlane(17, 13, int64_t{1} << 50, 3);
    EXPECT_EQ(Blur(in, 17, 13, 2.0), ReferenceBlur(in, 17, 13, 2.0));
}

TEST(GaussianBlurPlane, ThirtyTwoBitFormAgreesWithSixtyFourBit) {
    const std::vector<int64_t> in = RandomPlane(83, 29, 1 << 24, 11);
    std::vector<int32_t> in32(in.begin(), in.end()), out32(in.size());
    ASSERT_TRUE(GaussianBlur(in32.data(), out32.data(), 83, 29, 83, 3.0, nullptr));
    const std::vector<int64_t> out = Blur(in, 83, 29, 3.0);
    EXPECT_EQ(std::vector<int64_t>(out32.begin(), out32.end()), out);
}

TEST(GaussianBlurPlane, SameResultForAnyNumberOfWorkers) {
    const std::vector<int64_t> in = RandomPlane(50, 31, 1 << 30, 9);
    const std::vector<int64_t> one = [&] {
        WorkerCountScope workers(1);
        return Blur(in, 50, 31, 2.5);
    }();
    WorkerCountScope workers(5);
    EXPECT_EQ(Blur(in, 50, 31, 2.5), one);
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
    KernelControl control;
    control.cancel = &cancel;
    EXPECT_FALSE(GaussianBlur(in.data(), out.data(), w, h, stride, 1.5, &control));
}
