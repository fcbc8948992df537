// Crop: aspect presets in shrink and grow mode (near an edge too), the cut of
// image and mask with ordered corners, and the mirrors.
#include "modules/crop/Crop_Kernel.h"
#include "modules/crop/Crop_Params.h"
#include "modules/mirror/Mirror_Kernel.h"

#include "ModuleTestImages.h"

#include <gtest/gtest.h>

namespace {

void ExpectRect(const CropRect& r, int32_t x0, int32_t y0, int32_t x1, int32_t y1) {
    EXPECT_EQ(r.x0, x0);
    EXPECT_EQ(r.y0, y0);
    EXPECT_EQ(r.x1, x1);
    EXPECT_EQ(r.y1, y1);
}

}  // namespace

TEST(CropAspect, ShrinkCutsTheLongerSideEvenly) {
    // a = 999 / 499 > 1.5: d = (999 - trunc(999 * (1.5 / a))) / 2 = 125.
    ExpectRect(ApplyAspect({0, 0, 999, 499}, 1.5f, AspectMode::Shrink, 1000, 500), 125, 0, 874, 499);
    // a = 499 / 999 < 1.5: d = (999 - trunc(999 * (a / 1.5))) / 2 = 333.
    ExpectRect(ApplyAspect({0, 0, 499, 999}, 1.5f, AspectMode::Shrink, 500, 1000), 0, 333, 499, 666);
}

TEST(CropAspect, CornersAreOrderedFirst) {
    ExpectRect(ApplyAspect({999, 499, 0, 0}, 1.5f, AspectMode::Shrink, 1000, 500), 125, 0, 874, 499);
}

TEST(CropAspect, GrowNearTheTopEdgeShiftsInwardInsteadOfShrinking) {
    // a = 199 / 99 > 1.5: g = (trunc(99 * (a / 1.5)) - 99) / 2 = 16; y0 would
    // be -11, so the rectangle moves down by 11 and keeps its new height.
    ExpectRect(ApplyAspect({0, 5, 199, 104}, 1.5f, AspectMode::Grow, 400, 300), 0, 0, 199, 131);
    // Near the bottom edge it moves up: y1 would be 305.
    ExpectRect(ApplyAspect({0, 190, 199, 289}, 1.5f, AspectMode::Grow, 400, 300), 0, 168, 199, 299);
}

TEST(CropAspect, GrowBeyondBothEdgesIsClampedToTheImage) {
    // g = 127 on a 300 wide image: wider than the image, so it spans it.
    ExpectRect(ApplyAspect({10, 0, 109, 199}, 1.7777778f, AspectMode::Grow, 300, 200), 0, 0, 299, 199);
}

TEST(CropAspect, ZeroLengthSideIsLeftAsItIs) {
    ExpectRect(ApplyAspect({10, 20, 10, 80}, 1.5f, AspectMode::Shrink, 100, 100), 10, 20, 10, 80);
    ExpectRect(ApplyAspect({10, 20, 50, 20}, 0.5625f, AspectMode::Grow, 100, 100), 10, 20, 50, 20);
}

TEST(CropAspect, PresetsAsOnTheForm) {
    const auto presets = Crop_AspectPresets();
    ASSERT_EQ(presets.size(), 8u);
    EXPECT_EQ(presets[1].ratio, 0.6666667f);
    EXPECT_EQ(presets[2].mode, AspectMode::Shrink);
    EXPECT_EQ(presets[6].ratio, 1.7777778f);
    EXPECT_EQ(presets[6].mode, AspectMode::Grow);
}

TEST(CropCut, PixelXYIsSourcePixelXPlusDxYPlusDy) {
    for (bool mono : {false, true}) {
        ImagePtr image = MakeImage(40, 30, 30, [mono](int32_t x, int32_t y, int c) {
            return int64_t{y} * 100 + x + (mono ? 0 : 10000 * c);
        });
        ImagePtr out(Crop_Image(image.get(), {5, 7, 24, 19}));
        ASSERT_TRUE(out);
        EXPECT_EQ(out->width, 20);
        EXPECT_EQ(out->height, 13);
        for (int c = 0; c < 3; ++c)
            for (int32_t y = 0; y < out->height; ++y)
                for (int32_t x = 0; x < out->width; ++x)
                    ASSERT_EQ(Pixel(out.get(), c, x, y), Pixel(image.get(), c, x + 5, y + 7));
    }
}

TEST(CropCut, CornersInEitherOrderGiveTheSameResult) {
    ImagePtr image = MakeImage(40, 30, 16, [](int32_t x, int32_t y, int c) { return y * 100 + x + c; });
    ImagePtr forward(Crop_Image(image.get(), {3, 4, 20, 25}));
    ImagePtr backward(Crop_Image(image.get(), {20, 25, 3, 4}));
    ImagePtr mixed(Crop_Image(image.get(), {20, 4, 3, 25}));
    ASSERT_TRUE(forward && backward && mixed);
    EXPECT_EQ(ImageDifference(forward.get(), backward.get()), "");
    EXPECT_EQ(ImageDifference(forward.get(), mixed.get()), "");
}

TEST(CropCut, ZeroWidthCropsNothingAndPlanesComeAlong) {
    ImagePtr image = MakeImage(10, 10, 16, [](int32_t x, int32_t, int) { return x; });
    EXPECT_EQ(Crop_Image(image.get(), {4, 0, 4, 9}), nullptr);
    EXPECT_EQ(Crop_Image(image.get(), {0, 4, 9, 4}), nullptr);
    Image_AddAlpha(image.get());
    image->alpha[3] = 7;
    ImagePtr out(Crop_Image(image.get(), {2, 0, 5, 3}));
    ASSERT_TRUE(out && out->alpha);
    EXPECT_EQ(out->alpha[1], 7);
    EXPECT_EQ(out->bitDepth, 16);
}

TEST(Mirror, HorizontalAndVertical) {
    ImagePtr image = MakeImage(5, 4, 16, [](int32_t x, int32_t y, int c) { return y * 10 + x + 100 * c; });
    ImagePtr h(Image_Clone(image.get()));
    Mirror_Run(h.get(), {true});
    ImagePtr v(Image_Clone(image.get()));
    Mirror_Run(v.get(), {false});
    for (int c = 0; c < 3; ++c)
        for (int32_t y = 0; y < 4; ++y)
            for (int32_t x = 0; x < 5; ++x) {
                EXPECT_EQ(Pixel(h.get(), c, x, y), Pixel(image.get(), c, 4 - x, y));
                EXPECT_EQ(Pixel(v.get(), c, x, y), Pixel(image.get(), c, x, 3 - y));
            }
    Mirror_Run(h.get(), {true});
    Mirror_Run(v.get(), {false});
    EXPECT_EQ(ImageDifference(h.get(), image.get()), "");
    EXPECT_EQ(ImageDifference(v.get(), image.get()), "");
}
