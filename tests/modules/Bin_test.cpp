// Bin: the box path (truncated block averages, dropped odd edges, the plain
// copy at 1.0, counts past 255), constants kept at every factor, grey kept
// grey, no result where there is no output, and the shared bilinear sampler.
// Both paths' exact output on a synthetic sky is pinned in KernelDigest_test.
#include "modules/bin/Bin_Kernel.h"
#include "modules/common/SampleBilinear.h"

#include "ModuleTestImages.h"

#include <gtest/gtest.h>

#include <tuple>

TEST(BinBox, HalfAveragesTwoByTwoTruncatingDropsTheOddLastRowAndColumnAndNothingGivesNoResult) {
    // The first pixel is 3 more: (12000 + 3) / 4 truncates to 3000.
    ImagePtr image = MakeImage(
        5, 3, 30, [](int32_t x, int32_t y, int c) { return 1000 * (y * 5 + x) + c + (x + y == 0 ? 3 : 0); });
    ImagePtr out(BinImage(image.get(), 0.5, nullptr));
    ASSERT_TRUE(out);
    EXPECT_EQ(std::tuple(out->width, out->height, out->bitDepth), std::tuple(2, 1, 30));
    // (0 + 1 + 5 + 6) * 1000 / 4 and (2 + 3 + 7 + 8) * 1000 / 4; column 4 and
    // row 2 are not part of any block.
    EXPECT_EQ(std::tuple(Pixel(out.get(), 0, 0, 0), Pixel(out.get(), 0, 1, 0), Pixel(out.get(), 2, 1, 0)),
              std::tuple(3000, 5000, 5002));
    // No result for a zero scale or an empty output (0 x 0).
    EXPECT_EQ(BinImage(image.get(), 0.0, nullptr), nullptr);
    EXPECT_EQ(BinImage(image.get(), 0.01, nullptr), nullptr);
}

TEST(BinBox, FullScaleIsAPixelForPixelCopy) {
    ImagePtr image = MakeImage(13, 7, 30, [](int32_t x, int32_t y, int c) {
        return static_cast<int64_t>(TestHash(uint64_t(y * 13 + x) * 3 + uint64_t(c)) % (1u << 30));
    });
    ImagePtr out(BinImage(image.get(), 10000 * 0.0001, nullptr));
    ASSERT_TRUE(out);
    EXPECT_EQ(ImageDifference(out.get(), image.get()), "");
}

TEST(BinAnyFactor, ConstantStaysConstantInEveryChannel) {
    // 1/16 and beyond put 256 and more source pixels into one output pixel.
    const auto constant = [](int32_t, int32_t, int c) { return int64_t{700000000} + 1000 * c; };
    ImagePtr image = MakeImage(211, 173, 30, constant);
    for (int32_t v : {10000, 7071, 5000, 3538, 2500, 1000, 625, 500, 100}) {
        ImagePtr out(BinImage(image.get(), v * 0.0001, nullptr));
        ASSERT_TRUE(out) << v;
        int32_t w, h;
        Bin_OutputSize(211, 173, v * 0.0001, &w, &h);
        EXPECT_EQ(ImageDifference(out.get(), MakeImage(w, h, 30, constant).get()), "") << "v " << v;
    }
}

TEST(BinAnyFactor, MonoDataStaysGrey) {
    ImagePtr image = MakeImage(64, 48, 30, [](int32_t x, int32_t y, int) { return int64_t{1000} * (x * y); });
    image->mono = 1;
    for (int32_t v : {5000, 7071}) {
        ImagePtr out(BinImage(image.get(), v * 0.0001, nullptr));
        ASSERT_TRUE(out);
        EXPECT_EQ(out->mono, 1);
        const ImagePtr grey = MakeImage(out->width, out->height, 30,
                                        [&](int32_t x, int32_t y, int) { return Pixel(out.get(), 0, x, y); });
        EXPECT_EQ(ImageDifference(out.get(), grey.get()), "") << v;
    }
}

TEST(SampleBilinearTest, InsideBetweenOutsideAndJustLeftOfTheFirstColumn) {
    ImagePtr image = MakeImage(3, 2, 16, [](int32_t x, int32_t y, int c) { return 100 * x + 1000 * y + c; });
    EXPECT_EQ(SampleBilinear(image.get(), 1.0, 1.0).red, 1100);
    EXPECT_EQ(SampleBilinear(image.get(), 0.5, 0.5).green, 551);
    EXPECT_EQ(SampleBilinear(image.get(), 0.25, 0.0).blue, 27);  // trunc(25 + 2)
    // Beyond the last column and row the pixel itself is the neighbour.
    EXPECT_EQ(SampleBilinear(image.get(), 2.5, 1.5).red, 1200);
    EXPECT_EQ(SampleBilinear(image.get(), 3.0, 0.0).red, 0);
    EXPECT_EQ(SampleBilinear(image.get(), 0.0, -1.0).red, 0);
    // Just left of the first column the value is extrapolated, then clamped:
    // -50 to 0, 1.5 x max to max.
    const int64_t pairs[][3] = {{0, 100, 0}, {65535, 0, 65535}, {1000, 2000, 500}};  // left, right, value
    for (const auto& p : pairs) {
        ImagePtr two = MakeImage(2, 1, 16, [&](int32_t x, int32_t, int) { return p[x]; });
        EXPECT_EQ(SampleBilinear(two.get(), -0.5, 0.0).red, p[2]) << p[0] << " " << p[1];
    }
}
