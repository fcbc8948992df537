// Rotate: exact quarter turns and their index mapping (the copy at 0 too), the
// canvas a tenth of a degree grows, agreement with the plain walk for every
// size and quadrant, the AVX-512 forms against the portable ones, and progress.
// The exact output on a synthetic sky is pinned in KernelDigest_test.
#include "modules/common/SampleBilinear.h"
#include "modules/rotate/Rotate_Kernel.h"
#include "modules/rotate/Rotate_Quarter.h"
#include "modules/rotate/Rotate_Span.h"

#include "ModuleTestImages.h"

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>
#include <vector>

namespace {

ImagePtr Numbered(int32_t w, int32_t h) {
    return MakeImage(w, h, 30, [w](int32_t x, int32_t y, int c) { return int64_t{y} * w + x + 1000000 * c; });
}

// Samples near the maximum and zero, so that the clamp at both ends and the
// extrapolation just left of or above the image are exercised.
ImagePtr Noisy(int32_t w, int32_t h, int bitDepth) {
    return MakeImage(w, h, bitDepth, [w, bitDepth](int32_t x, int32_t y, int c) {
        const uint64_t r =
            TestHash(uint64_t(y) * 7919 + uint64_t(x) * 3 + uint64_t(c) + uint64_t(w) * 104729);
        const int64_t maxValue = (int64_t{1} << bitDepth) - 1;
        if ((r & 3) == 0) return maxValue - int64_t(r >> 60);
        if ((r & 3) == 1) return int64_t(r >> 62);
        return int64_t((r >> 8) % uint64_t(maxValue + 1));
    });
}

// The rotation as first written: one row at a time from x = 0, each step
// adding (c, -s), one pixel at a time through SampleBilinear_Plane.
ImagePtr PlainWalk(const ImageBuffer* src, double degrees) {
    int32_t w, h;
    Rotate_OutputSize(src->width, src->height, degrees, &w, &h);
    const double c = std::sin((degrees + 90.0) * 0.017453292519943295);
    const double s = std::sin(degrees * 0.017453292519943295);
    ImagePtr out(Image_CreateCleared(w, h));
    out->bitDepth = src->bitDepth;
    out->maxValue = src->maxValue;
    const int64_t* in[3] = {src->red, src->green, src->blue};
    int64_t* to[3] = {out->red, out->green, out->blue};
    for (int32_t y = 0; y < h; ++y) {
        const double u = 0 - w / 2.0, v = y - h / 2.0;
        double sx = src->width / 2.0 + u * c + v * s;
        double sy = src->height / 2.0 - u * s + v * c;
        for (int32_t x = 0; x < w; ++x, sx += c, sy -= s) {
            if (sx <= -1.0 || sx >= src->width || sy <= -1.0 || sy >= src->height) continue;  // black
            const int32_t ix = static_cast<int32_t>(sx), iy = static_cast<int32_t>(sy);
            for (int k = 0; k < 3; ++k)
                to[k][int64_t{y} * out->stride + x] =
                    SampleBilinear_Plane(in[k], src->stride, ix, iy, ix + 1 < src->width ? 1 : 0,
                                         iy + 1 < src->height ? 1 : 0, sx - ix, sy - iy, src->maxValue);
        }
    }
    return out;
}

}  // namespace

TEST(RotateQuarter, EveryTurnMapsEverySampleOfALargerImage) {
    // Wide enough for whole 8 x 8 blocks, heads and tails, tall enough for
    // more than one band and a band that ends part way through a block; no
    // turn at all is a plain copy.
    ImagePtr image = Numbered(203, 141);
    for (const int turns : {0, 1, 2, 3}) {
        ImagePtr out(RotateImage(image.get(), 90.0 * turns, nullptr));
        ASSERT_TRUE(out);
        const ImagePtr expected =
            MakeImage(turns % 2 ? 141 : 203, turns % 2 ? 203 : 141, 30, [&](int32_t x, int32_t y, int c) {
                const int32_t sx = turns == 0 ? x : turns == 1 ? y : turns == 2 ? 203 - 1 - x : 203 - 1 - y;
                const int32_t sy = turns == 0 ? y : turns == 1 ? 141 - 1 - x : turns == 2 ? 141 - 1 - y : x;
                return Pixel(image.get(), c, sx, sy);
            });
        EXPECT_EQ(ImageDifference(out.get(), expected.get()), "") << turns << " turns";
    }
}

TEST(RotateQuarter, PortableAndAvx512FormsGiveTheSamePlane) {
    const RotateQuarterFn fast = RotateQuarter_Avx512();
    if (!fast) GTEST_SKIP() << "no AVX-512 here";
    ImagePtr image = Numbered(203, 141);
    for (const int turns : {1, 2, 3}) {
        const int32_t w = turns == 2 ? 203 : 141, h = turns == 2 ? 141 : 203;
        std::vector<int64_t> a(size_t(w) * h, -1), b(size_t(w) * h, -2);
        // Bands of uneven heights, as the last band of an image can be.
        for (const auto& [y0, y1] : std::vector<std::pair<int32_t, int32_t>>{{0, 64}, {64, 75}, {75, h}}) {
            RotateQuarter_Band({image->red, 203, 141, image->stride, a.data(), w, w, turns, y0, y1});
            fast({image->red, 203, 141, image->stride, b.data(), w, w, turns, y0, y1});
        }
        EXPECT_EQ(a, b) << turns << " turns";
    }
}

TEST(RotateGeneral, TenthOfADegreeGrowsTheCanvasByOnePixel) {
    ImagePtr image = MakeImage(1000, 1000, 30, [](int32_t, int32_t, int) { return 5000; });
    ImagePtr out(RotateImage(image.get(), 0.1, nullptr));
    ASSERT_TRUE(out);
    EXPECT_EQ(std::tuple(out->width, out->height, out->bitDepth), std::tuple(1001, 1001, 30));
    // Black corners, the image in the middle.
    EXPECT_EQ((std::vector<int64_t>{Pixel(out.get(), 0, 0, 0), Pixel(out.get(), 2, 1000, 1000),
                                    Pixel(out.get(), 1, 500, 500)}),
              (std::vector<int64_t>{0, 0, 5000}));
}

TEST(RotateGeneral, EqualsThePlainWalkForEverySizeAndQuadrant) {
    // Thin and tiny sources (one column: no pair of neighbours), sizes that
    // end tiles and eight-pixel blocks part way, every quadrant.
    const std::vector<std::pair<int32_t, int32_t>> sizes = {{1, 9},  {9, 1},   {2, 2},
                                                            {3, 17}, {37, 23}, {300, 41}};
    for (const auto& [w, h] : sizes) {
        const ImagePtr image = Noisy(w, h, 16);
        for (const double degrees : {0.1, 10.0, 45.0, 89.9, 90.1, 135.0, 179.9, 233.7, 300.0, 359.9}) {
            int32_t ow, oh;
            Rotate_OutputSize(w, h, degrees, &ow, &oh);
            ImagePtr out(RotateImage(image.get(), degrees, nullptr));
            SCOPED_TRACE(testing::Message() << w << "x" << h << " at " << degrees);
            if (ow < 1 || oh < 1) {
                EXPECT_EQ(out, nullptr);
                continue;
            }
            ASSERT_TRUE(out);
            EXPECT_EQ(ImageDifference(out.get(), PlainWalk(image.get(), degrees).get()), "");
        }
    }
}

TEST(RotateSpan, Avx512FormGivesThePortableFormsBits) {
    const RotateSpanFn fast = RotateSpan_Avx512();
    if (!fast) GTEST_SKIP() << "no AVX-512 here";
    for (const auto& [w, h] : std::vector<std::pair<int32_t, int32_t>>{{1, 1}, {2, 3}, {13, 7}, {64, 64}}) {
        const ImagePtr image = Noisy(w, h, 30);
        const RotateSpanSource source{
            {image->red, image->green, image->blue}, w, h, image->stride, image->maxValue};
        // Positions from beyond one side to beyond the other, the edges
        // themselves (-1, 0, the last column and row, the size) included.
        constexpr int32_t kCount = 203;
        std::vector<double> xs(kCount), ys(kCount);
        for (int32_t i = 0; i < kCount; ++i) {
            const uint64_t r = TestHash(uint64_t(i) + uint64_t(w) * 1000);
            const double edges[] = {-1.0, -0.5, 0.0, w - 1.0, w - 0.25, double(w), -1.0000001};
            xs[i] = (r & 7) == 7 ? (r >> 3) % (w + 4) - 2.0 + double((r >> 20) % 1000) / 1000
                                 : edges[(r & 7) % 7];
            ys[i] = ((r >> 32) & 7) == 7 ? (r >> 35) % (h + 4) - 2.0 + double((r >> 48) % 1000) / 1000
                                         : double((r >> 40) % (h + 2)) - 1.0 + double((r >> 50) & 3) / 4;
        }
        for (const int32_t n : {0, 1, 7, 8, 9, 64, kCount}) {
            std::vector<int64_t> a(3 * n + 1, -7), b(3 * n + 1, -7);
            int64_t* const outA[3] = {a.data(), a.data() + n, a.data() + 2 * n};
            int64_t* const outB[3] = {b.data(), b.data() + n, b.data() + 2 * n};
            RotateSpan_Sample(source, xs.data(), ys.data(), n, outA);
            fast(source, xs.data(), ys.data(), n, outB);
            EXPECT_EQ(a, b) << w << "x" << h << ", " << n << " pixels";  // the sentinel past the end included
        }
    }
}

TEST(RotateGeneral, ProgressEndsAtOneHundred) {
    ImagePtr image = Numbered(40, 30);
    int last = -1;
    const KernelControl control{
        .progress = [](void* context, const char*, int percent) { *static_cast<int*>(context) = percent; },
        .context = &last};
    ASSERT_TRUE(ImagePtr(RotateImage(image.get(), 12.5, &control)));
    EXPECT_EQ(last, 100);
}
