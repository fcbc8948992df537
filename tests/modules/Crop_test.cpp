// Crop: the aspect rule in shrink and grow mode (near an edge too), the cut of
// image and its planes with ordered corners, and the mirrors.
#include "modules/crop/Crop_Kernel.h"
#include "modules/mirror/Mirror_Kernel.h"

#include "ModuleTestImages.h"

#include <gtest/gtest.h>

#include <array>

// The rectangle the aspect buttons leave, in shrink and grow mode.
TEST(CropAspect, ShrinkAndGrowRules) {
    struct Case {
        CropRect in;
        float ratio;
        AspectMode mode;
        int32_t width, height;
        CropRect out;
    } cases[] = {
        // a = 999 / 499 > 1.5: d = (999 - trunc(999 * (1.5 / a))) / 2 = 125.
        {{0, 0, 999, 499}, 1.5f, AspectMode::Shrink, 1000, 500, {125, 0, 874, 499}},
        // a = 499 / 999 < 1.5: d = (999 - trunc(999 * (a / 1.5))) / 2 = 333.
        {{0, 0, 499, 999}, 1.5f, AspectMode::Shrink, 500, 1000, {0, 333, 499, 666}},
        {{999, 499, 0, 0}, 1.5f, AspectMode::Shrink, 1000, 500, {125, 0, 874, 499}},  // corners ordered first
        // a = 199 / 99 > 1.5: g = (trunc(99 * (a / 1.5)) - 99) / 2 = 16; y0 would
        // be -11, so the rectangle moves down by 11 and keeps its new height.
        {{0, 5, 199, 104}, 1.5f, AspectMode::Grow, 400, 300, {0, 0, 199, 131}},
        {{0, 190, 199, 289}, 1.5f, AspectMode::Grow, 400, 300, {0, 168, 199, 299}},  // y1 would be 305
        // g = 127 on a 300 wide image: wider than the image, so it spans it.
        {{10, 0, 109, 199}, 1.7777778f, AspectMode::Grow, 300, 200, {0, 0, 299, 199}},
        // A side of zero length is left as it is.
        {{10, 20, 10, 80}, 1.5f, AspectMode::Shrink, 100, 100, {10, 20, 10, 80}},
        {{10, 20, 50, 20}, 0.5625f, AspectMode::Grow, 100, 100, {10, 20, 50, 20}},
    };
    for (const Case& c : cases) {
        const CropRect r = ApplyAspect(c.in, c.ratio, c.mode, c.width, c.height);
        EXPECT_EQ((std::array{r.x0, r.y0, r.x1, r.y1}), (std::array{c.out.x0, c.out.y0, c.out.x1, c.out.y1}))
            << c.in.x0 << "," << c.in.y0 << "," << c.in.x1 << "," << c.in.y1;
    }
}

TEST(CropCut, PixelXYIsSourcePixelXPlusDxYPlusDyWithCornersInAnyOrder) {
    for (bool mono : {false, true}) {
        ImagePtr image = MakeImage(40, 30, 30, [mono](int32_t x, int32_t y, int c) {
            return int64_t{y} * 100 + x + (mono ? 0 : 10000 * c);
        });
        for (const CropRect& rect :
             {CropRect{5, 7, 24, 19}, CropRect{24, 19, 5, 7}, CropRect{24, 7, 5, 19}}) {
            ImagePtr out(Crop_Image(image.get(), rect));
            ASSERT_TRUE(out);
            const ImagePtr expected = MakeImage(
                20, 13, 30, [&](int32_t x, int32_t y, int c) { return Pixel(image.get(), c, x + 5, y + 7); });
            EXPECT_EQ(ImageDifference(out.get(), expected.get()), "");
        }
    }
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
    for (const bool horizontal : {true, false}) {
        SCOPED_TRACE(horizontal ? "left-right" : "top-bottom");
        ImagePtr out(Image_Clone(image.get()));
        Mirror_Run(out.get(), {horizontal});
        const ImagePtr expected = MakeImage(5, 4, 16, [&](int32_t x, int32_t y, int c) {
            return Pixel(image.get(), c, horizontal ? 4 - x : x, horizontal ? y : 3 - y);
        });
        EXPECT_EQ(ImageDifference(out.get(), expected.get()), "");
        Mirror_Run(out.get(), {horizontal});  // mirrored twice: the image itself
        EXPECT_EQ(ImageDifference(out.get(), image.get()), "");
    }
}
