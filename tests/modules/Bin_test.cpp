// Bin: the box path (block averages, dropped odd edges, the plain copy at 1.0,
// counts past 255), the prefiltered bilinear path, constants kept at every
// factor, and the shared bilinear sampler.
#include "modules/bin/Bin_Kernel.h"
#include "modules/common/SampleBilinear.h"

#include "ModuleTestImages.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>

TEST(BinPaths, WhichPathAndThePrefilterRadius) {
    EXPECT_TRUE(Bin_IsBoxPath(5000 * 0.0001));
    EXPECT_TRUE(Bin_IsBoxPath(10000 * 0.0001));
    EXPECT_TRUE(Bin_IsBoxPath(2500 * 0.0001));
    EXPECT_FALSE(Bin_IsBoxPath(7071 * 0.0001));
    EXPECT_FALSE(Bin_IsBoxPath(3538 * 0.0001));
    EXPECT_NEAR(Bin_PrefilterRadius(1 / (7071 * 0.0001)), 0.5, 1e-4);
    EXPECT_EQ(Bin_PrefilterRadius(1.0), 0.0);
    EXPECT_DOUBLE_EQ(Bin_PrefilterRadius(4.0), 2.0);
}

TEST(BinBox, HalfAveragesTwoByTwoAndDropsTheOddLastRowAndColumn) {
    ImagePtr image = MakeImage(5, 3, 30, [](int32_t x, int32_t y, int c) { return 1000 * (y * 5 + x) + c; });
    ImagePtr out(BinImage(image.get(), 0.5, nullptr));
    ASSERT_TRUE(out);
    EXPECT_EQ(out->width, 2);
    EXPECT_EQ(out->height, 1);
    // (0 + 1 + 5 + 6) * 1000 / 4 and (2 + 3 + 7 + 8) * 1000 / 4; column 4 and
    // row 2 are not part of any block.
    EXPECT_EQ(Pixel(out.get(), 0, 0, 0), 3000);
    EXPECT_EQ(Pixel(out.get(), 0, 1, 0), 5000);
    EXPECT_EQ(Pixel(out.get(), 2, 1, 0), 5002);
    EXPECT_EQ(out->bitDepth, 30);
}

TEST(BinBox, TruncatesTheAverage) {
    ImagePtr image = MakeImage(2, 2, 16, [](int32_t x, int32_t y, int) { return x + y == 0 ? 3 : 0; });
    ImagePtr out(BinImage(image.get(), 0.5, nullptr));
    ASSERT_TRUE(out);
    EXPECT_EQ(Pixel(out.get(), 0, 0, 0), 0);  // 3 / 4
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
    ImagePtr image =
        MakeImage(211, 173, 30, [](int32_t, int32_t, int c) { return int64_t{700000000} + 1000 * c; });
    for (int32_t v : {10000, 7071, 5000, 3538, 2500, 1000, 625, 500, 100}) {
        ImagePtr out(BinImage(image.get(), v * 0.0001, nullptr));
        ASSERT_TRUE(out) << v;
        int32_t w, h;
        Bin_OutputSize(211, 173, v * 0.0001, &w, &h);
        EXPECT_EQ(out->width, w);
        EXPECT_EQ(out->height, h);
        for (int c = 0; c < 3; ++c)
            for (int32_t y = 0; y < out->height; ++y)
                for (int32_t x = 0; x < out->width; ++x)
                    ASSERT_EQ(Pixel(out.get(), c, x, y), 700000000 + 1000 * c)
                        << "v " << v << " at " << x << "," << y;
    }
}

TEST(BinAnyFactor, MonoDataStaysGrey) {
    ImagePtr image = MakeImage(64, 48, 30, [](int32_t x, int32_t y, int) { return int64_t{1000} * (x * y); });
    image->mono = 1;
    for (int32_t v : {5000, 7071}) {
        ImagePtr out(BinImage(image.get(), v * 0.0001, nullptr));
        ASSERT_TRUE(out);
        EXPECT_EQ(out->mono, 1);
        for (int32_t y = 0; y < out->height; ++y)
            for (int32_t x = 0; x < out->width; ++x) {
                ASSERT_EQ(Pixel(out.get(), 0, x, y), Pixel(out.get(), 1, x, y));
                ASSERT_EQ(Pixel(out.get(), 0, x, y), Pixel(out.get(), 2, x, y));
            }
    }
}

TEST(BinResample, RampIsSampledAtTheScaledPositions) {
    // A horizontal ramp survives the symmetric prefilter away from the edges;
    // bilinear sampling then gives the ramp at x * W / W'.
    ImagePtr image = MakeImage(400, 30, 30, [](int32_t x, int32_t, int) { return int64_t{1000} * x; });
    ImagePtr out(BinImage(image.get(), 7071 * 0.0001, nullptr));
    ASSERT_TRUE(out);
    EXPECT_EQ(out->width, 282);
    EXPECT_EQ(out->height, 21);
    const double fx = 400.0 / 282.0;
    for (int32_t x = 2; x < 270; ++x)
        EXPECT_NEAR(double(Pixel(out.get(), 0, x, 10)), 1000.0 * x * fx, 1.0) << x;
}

TEST(BinEdges, NoResultForZeroScaleOrAnEmptyOutputAndCancel) {
    ImagePtr image = MakeImage(30, 20, 16, [](int32_t, int32_t, int) { return 5; });
    EXPECT_EQ(BinImage(image.get(), 0.0, nullptr), nullptr);
    EXPECT_EQ(BinImage(image.get(), 0.01, nullptr), nullptr);  // 0 x 0
    std::atomic<bool> cancel{true};
    KernelControl control;
    control.cancel = &cancel;
    EXPECT_EQ(BinImage(image.get(), 0.5, &control), nullptr);
    EXPECT_EQ(BinImage(image.get(), 0.7071, &control), nullptr);
}

TEST(SampleBilinearTest, InsideBetweenAndOutside) {
    ImagePtr image = MakeImage(3, 2, 16, [](int32_t x, int32_t y, int c) { return 100 * x + 1000 * y + c; });
    EXPECT_EQ(SampleBilinear(image.get(), 1.0, 1.0).red, 1100);
    EXPECT_EQ(SampleBilinear(image.get(), 0.5, 0.5).green, 551);
    EXPECT_EQ(SampleBilinear(image.get(), 0.25, 0.0).blue, 27);  // trunc(25 + 2)
    // Beyond the last column and row the pixel itself is the neighbour.
    EXPECT_EQ(SampleBilinear(image.get(), 2.5, 1.5).red, 1200);
    EXPECT_EQ(SampleBilinear(image.get(), 3.0, 0.0).red, 0);
    EXPECT_EQ(SampleBilinear(image.get(), 0.0, -1.0).red, 0);
}

TEST(SampleBilinearTest, JustLeftOfTheFirstColumnExtrapolatesAndIsClamped) {
    ImagePtr rising = MakeImage(2, 1, 16, [](int32_t x, int32_t, int) { return x == 0 ? 0 : 100; });
    EXPECT_EQ(SampleBilinear(rising.get(), -0.5, 0.0).red, 0);  // -50 clamped
    ImagePtr falling = MakeImage(2, 1, 16, [](int32_t x, int32_t, int) { return x == 0 ? 65535 : 0; });
    EXPECT_EQ(SampleBilinear(falling.get(), -0.5, 0.0).red, 65535);  // 1.5 x max clamped
    ImagePtr mid = MakeImage(2, 1, 16, [](int32_t x, int32_t, int) { return x == 0 ? 1000 : 2000; });
    EXPECT_EQ(SampleBilinear(mid.get(), -0.5, 0.0).red, 500);
}
