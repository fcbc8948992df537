// Rotate's screen helpers: the levelling grid's spacing for a zoom and a view,
// the pixels its lines change, and the rectangle without black corners.
#include "modules/rotate/Rotate_Grid.h"
#include "modules/rotate/Rotate_InnerRect.h"
#include "modules/rotate/Rotate_Kernel.h"

#include "ModuleTestImages.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

TEST(RotateGrid, SpacingFollowsTheZoomAndTheViewWithinLimits) {
    const struct {
        int32_t zoom, viewWidth, viewHeight, step, width;
    } cases[] = {
        {100, 480, 320, 40, 1},     // an eighth of the shorter side
        {20, 480, 320, 200, 5},     // 1 image pixel in 5 is shown: lines 5 wide
        {400, 1600, 1000, 31, 1},   // 125 screen pixels at 4x
        {100, 100, 100, 32, 1},     // no closer than 32 screen pixels
        {100, 4000, 3000, 160, 1},  // no wider than 160
        {5, 0, 0, 1280, 20},        // view unknown: 64 screen pixels
        {3200, 480, 320, 2, 1},     // at least a gap as wide as a line
    };
    for (const auto& c : cases) {
        const RotateGridSpacing g = Rotate_GridSpacing(c.zoom, c.viewWidth, c.viewHeight);
        EXPECT_EQ(std::tuple(g.step, g.width), std::tuple(c.step, c.width))
            << c.zoom << "% in " << c.viewWidth << "x" << c.viewHeight;
    }
}

// Lines through the centre (200, 150) and every step either side; a pixel on
// one is lightened when it is darker than mid-grey overall (a deep red is),
// darkened otherwise, all channels alike.
TEST(RotateGrid, LinesLightenDarkPixelsAndDarkenBrightOnes) {
    constexpr int64_t kDarkRed[3] = {60000, 1000, 1000}, kBright = 64535;
    const struct {
        RotateGridSpacing spacing;
        std::vector<int32_t> columns;  // on a vertical line
    } cases[] = {
        {{40, 1}, {0, 40, 80, 120, 160, 200, 240, 280, 320, 360}},
        {{200, 5}, {0, 1, 2, 198, 199, 200, 201, 202}},
    };
    for (const auto& c : cases) {
        ImagePtr image = MakeImage(
            400, 300, 16, [&](int32_t x, int32_t, int ch) { return x < 200 ? kDarkRed[ch] : kBright; });
        Rotate_DrawGrid(image.get(), c.spacing);
        std::vector<int32_t> changed;
        for (int32_t x = 0; x < 400; ++x)
            if (Pixel(image.get(), 1, x, 1) != (x < 200 ? kDarkRed[1] : kBright)) changed.push_back(x);
        EXPECT_EQ(changed, c.columns) << "every " << c.spacing.step;
        // Row 150 is on the horizontal line through the centre.
        EXPECT_EQ((std::vector<int64_t>{Pixel(image.get(), 0, 7, 150), Pixel(image.get(), 2, 7, 150),
                                        Pixel(image.get(), 0, 207, 150)}),
                  (std::vector<int64_t>{62767, 33267, 32267}));
    }
}

// The rectangle against the kernel's own output: a constant picture turned
// has no black pixel inside it, and one more row or column on any side takes
// in a black one (or leaves the canvas).
TEST(RotateInnerRect, HoldsNoBlackPixelAndCannotGrowOnAnySide) {
    const struct {
        int32_t width, height;
        double degrees;
    } cases[] = {{1000, 1000, 0.1}, {640, 480, 10.0},  {480, 640, 33.3}, {301, 97, 45.0},
                 {97, 301, 135.5},  {200, 150, 271.2}, {64, 64, 359.9},  {500, 40, 5.0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.width << "x" << c.height << " at " << c.degrees);
        ImagePtr image = MakeImage(c.width, c.height, 30, [](int32_t, int32_t, int) { return 1 << 29; });
        ImagePtr out(RotateImage(image.get(), c.degrees, nullptr));
        ASSERT_TRUE(out);
        const RotateRect r = Rotate_InnerRect(c.width, c.height, c.degrees);
        ASSERT_LE(r.x0, r.x1);
        const auto black = [&](int32_t x0, int32_t y0, int32_t x1, int32_t y1) {
            if (x0 < 0 || y0 < 0 || x1 >= out->width || y1 >= out->height) return true;
            for (int32_t y = y0; y <= y1; ++y)
                for (int32_t x = x0; x <= x1; ++x)
                    if (Pixel(out.get(), 0, x, y) == 0) return true;
            return false;
        };
        EXPECT_FALSE(black(r.x0, r.y0, r.x1, r.y1));
        EXPECT_TRUE(black(r.x0 - 1, r.y0, r.x1, r.y1));
        EXPECT_TRUE(black(r.x0, r.y0 - 1, r.x1, r.y1));
        EXPECT_TRUE(black(r.x0, r.y0, r.x1 + 1, r.y1));
        EXPECT_TRUE(black(r.x0, r.y0, r.x1, r.y1 + 1));
    }
    // A quarter turn leaves nothing to crop: the whole turned picture.
    const RotateRect quarter = Rotate_InnerRect(30, 20, 90.0);
    EXPECT_EQ(std::tuple(quarter.x0, quarter.y0, quarter.x1, quarter.y1), std::tuple(0, 0, 19, 29));
}
