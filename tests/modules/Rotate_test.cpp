// Rotate: exact quarter turns and their index mapping, four of them giving the
// original, the copy at 0, the bounding canvas, black corners and cancelling.
#include "modules/rotate/Rotate_Kernel.h"
#include "modules/rotate/Rotate_Params.h"

#include "ModuleTestImages.h"

#include <gtest/gtest.h>

#include <atomic>

namespace {

ImagePtr Numbered(int32_t w, int32_t h) {
    return MakeImage(w, h, 30, [w](int32_t x, int32_t y, int c) { return int64_t{y} * w + x + 1000000 * c; });
}

}  // namespace

TEST(RotateQuarter, NinetyTakesSourceYAndHeightMinusOneMinusX) {
    ImagePtr image = Numbered(7, 4);
    ImagePtr out(RotateImage(image.get(), 90.0, nullptr));
    ASSERT_TRUE(out);
    ASSERT_EQ(out->width, 4);
    ASSERT_EQ(out->height, 7);
    for (int32_t y = 0; y < out->height; ++y)
        for (int32_t x = 0; x < out->width; ++x)
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(Pixel(out.get(), c, x, y), Pixel(image.get(), c, y, 4 - 1 - x));
}

TEST(RotateQuarter, OneEightyAndTwoSeventyMapAsStated) {
    ImagePtr image = Numbered(5, 3);
    ImagePtr half(RotateImage(image.get(), 180.0, nullptr));
    ImagePtr three(RotateImage(image.get(), 270.0, nullptr));
    ASSERT_TRUE(half && three);
    for (int32_t y = 0; y < 3; ++y)
        for (int32_t x = 0; x < 5; ++x)
            EXPECT_EQ(Pixel(half.get(), 0, x, y), Pixel(image.get(), 0, 4 - x, 2 - y));
    ASSERT_EQ(three->width, 3);
    for (int32_t y = 0; y < 5; ++y)
        for (int32_t x = 0; x < 3; ++x)
            EXPECT_EQ(Pixel(three.get(), 0, x, y), Pixel(image.get(), 0, 5 - 1 - y, x));
}

TEST(RotateQuarter, FourTurnsGiveTheOriginalAndTurnsCompose) {
    ImagePtr image = Numbered(131, 70);  // more than one tile each way
    ImagePtr a(RotateImage(image.get(), 90.0, nullptr));
    ImagePtr b(RotateImage(a.get(), 90.0, nullptr));
    ImagePtr c(RotateImage(b.get(), 90.0, nullptr));
    ImagePtr d(RotateImage(c.get(), 90.0, nullptr));
    ASSERT_TRUE(a && b && c && d);
    EXPECT_EQ(ImageDifference(d.get(), image.get()), "");
    ImagePtr half(RotateImage(image.get(), 180.0, nullptr));
    ImagePtr three(RotateImage(image.get(), 270.0, nullptr));
    EXPECT_EQ(ImageDifference(b.get(), half.get()), "");
    EXPECT_EQ(ImageDifference(c.get(), three.get()), "");
}

TEST(RotateGeneral, ZeroIsACopy) {
    ImagePtr image = Numbered(9, 6);
    ImagePtr out(RotateImage(image.get(), 0.0, nullptr));
    ASSERT_TRUE(out);
    EXPECT_EQ(ImageDifference(out.get(), image.get()), "");
}

TEST(RotateGeneral, TenthOfADegreeGrowsTheCanvasByOnePixel) {
    int32_t w, h;
    Rotate_OutputSize(1000, 1000, 0.1, &w, &h);
    EXPECT_EQ(w, 1001);
    EXPECT_EQ(h, 1001);
    ImagePtr image = MakeImage(1000, 1000, 30, [](int32_t, int32_t, int) { return 5000; });
    ImagePtr out(RotateImage(image.get(), Rotate_Degrees(RotateParams{1}), nullptr));
    ASSERT_TRUE(out);
    EXPECT_EQ(out->width, 1001);
    EXPECT_EQ(out->height, 1001);
    EXPECT_EQ(Pixel(out.get(), 0, 0, 0), 0);  // black corners
    EXPECT_EQ(Pixel(out.get(), 2, 1000, 1000), 0);
    EXPECT_EQ(Pixel(out.get(), 1, 500, 500), 5000);
    EXPECT_EQ(out->bitDepth, 30);
}

TEST(RotateGeneral, BoundingCanvasAndConstantInside) {
    int32_t w, h;
    Rotate_OutputSize(600, 400, 10.0, &w, &h);
    // trunc(W |c| + H |s|) by trunc(H |c| + W |s|)
    EXPECT_EQ(w, 660);
    EXPECT_EQ(h, 498);
    ImagePtr image = MakeImage(60, 40, 16, [](int32_t, int32_t, int c) { return 30000 + c; });
    ImagePtr out(RotateImage(image.get(), 33.3, nullptr));
    ASSERT_TRUE(out);
    EXPECT_EQ(Pixel(out.get(), 2, out->width / 2, out->height / 2), 30002);
    for (int32_t y = 0; y < out->height; ++y)
        for (int32_t x = 0; x < out->width; ++x) {
            const int64_t v = Pixel(out.get(), 0, x, y);
            ASSERT_TRUE(v == 0 || (v >= 0 && v <= 30000)) << v;
        }
}

TEST(RotateGeneral, ProgressAndCancel) {
    ImagePtr image = Numbered(40, 30);
    struct Seen {
        int last = -1;
    } seen;
    KernelControl control;
    control.context = &seen;
    control.progress = [](void* context, const char*, int percent) {
        static_cast<Seen*>(context)->last = percent;
    };
    ImagePtr out(RotateImage(image.get(), 12.5, &control));
    ASSERT_TRUE(out);
    EXPECT_EQ(seen.last, 100);
    std::atomic<bool> cancel{true};
    control.cancel = &cancel;
    EXPECT_EQ(RotateImage(image.get(), 12.5, &control), nullptr);
    EXPECT_EQ(RotateImage(image.get(), 90.0, &control), nullptr);
}

TEST(RotateParamsTest, ValueTextAndPresets) {
    EXPECT_EQ(Rotate_LogBlock(RotateParams{900}), "--- Rotate\nParameter [Angle] set to [90.00]\n");
    EXPECT_EQ(Rotate_Presets()[2].angle, 2700);
    EXPECT_DOUBLE_EQ(Rotate_Degrees(RotateParams{100}), 10.0);
}
