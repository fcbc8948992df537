// Flat fills, outlines, gradients and the clip rectangle, pixel by pixel.
// (Plain fills, one-pixel outlines and blended rectangles also show in the
// toolkit's golden pictures.)
#include "ui/draw/Draw_Rect.h"
#include "DrawCanvas.h"

namespace {

constexpr Colour565 kRed = 0xF800;
constexpr Colour565 kBlue = 0x001F;
constexpr uint32_t kSentinel = 0x00123456;  // off the rule: shows any pixel that was written

TEST(DrawRect, FillsAreClippedToTheSurfaceAndTheClip) {
    DrawCanvas c(16, 16, kSentinel);
    Draw_FillRect(c.surface, {-100, -100, 1000, 1000}, kBlue);
    EXPECT_TRUE(c.PaddingIs(kSentinel)) << "rows end at the surface's width, not its stride";
    EXPECT_EQ(c.At(15, 15), Draw_PixelFrom565(kBlue));

    DrawCanvas d(16, 16, kSentinel);
    {
        ClipScope scope(d.surface, {4, 4, 4, 4});
        {
            ClipScope inner(d.surface, {6, 0, 10, 16});  // narrows, never widens
            EXPECT_EQ(d.surface.clip.x, 6);
            EXPECT_EQ(d.surface.clip.width, 2);
            Draw_FillRect(d.surface, {0, 0, 16, 16}, kRed);
        }
        EXPECT_EQ(d.surface.clip.x, 4);
        EXPECT_EQ(d.surface.clip.width, 4);
    }
    EXPECT_EQ(d.surface.clip.width, 16) << "the scope restores the whole surface";
    DrawTest_ExpectPixels(d, [](int32_t x, int32_t y) {
        return DrawTest_Inside({6, 4, 2, 4}, x, y) ? Draw_PixelFrom565(kRed) : kSentinel;
    });
}

TEST(DrawRect, EmptyAndHugeRectanglesDrawNothingOrStayInside) {
    DrawCanvas c(8, 8, kSentinel);
    Draw_FillRect(c.surface, {2, 2, 0, 5}, kRed);
    Draw_FillRect(c.surface, {2, 2, 5, -3}, kRed);
    Draw_FillRect(c.surface, {INT32_MAX - 2, 0, 100, 8}, kRed);
    Draw_FillRect(c.surface, {8, 0, 4, 4}, kRed);
    for (uint32_t p : c.pixels) ASSERT_EQ(p, kSentinel);
    Surface none = Draw_MakeSurface(nullptr, 0, 10, 10);
    Draw_FillRect(none, {0, 0, 10, 10}, kRed);  // a surface without pixels is empty
    EXPECT_EQ(none.width, 0);
}

TEST(DrawRect, StrokeDrawsTheBorderInside) {
    DrawCanvas c(10, 8, kSentinel);
    Draw_StrokeRect(c.surface, {1, 1, 8, 6}, 2, kRed);
    DrawTest_ExpectPixels(c, [](int32_t x, int32_t y) {
        const bool border = DrawTest_Inside({1, 1, 8, 6}, x, y) && !DrawTest_Inside({3, 3, 4, 2}, x, y);
        return border ? Draw_PixelFrom565(kRed) : kSentinel;
    });
    DrawCanvas thick(6, 6, kSentinel);
    Draw_StrokeRect(thick.surface, {0, 0, 6, 6}, 9, kRed);  // thicker than half: a full fill
    for (uint32_t p : thick.pixels) {
        EXPECT_TRUE(p == kSentinel || p == Draw_PixelFrom565(kRed)) << p;
    }
    EXPECT_EQ(thick.At(3, 3), Draw_PixelFrom565(kRed));
}

TEST(DrawRect, GradientRunsFromTopRowToBottomRowInRoundedSteps) {
    DrawCanvas c(3, 32);
    Draw_FillVerticalGradient(c.surface, {0, 0, 3, 32}, 0x0000, 0xF800);
    for (int32_t y = 0; y < 32; ++y) {
        // Red 0 to 31 over 31 steps: row y has red y exactly.
        EXPECT_EQ(c.At(0, y), Draw_PixelFromFields({y, 0, 0}));
        EXPECT_EQ(c.At(2, y), c.At(0, y));
    }
    EXPECT_EQ(Draw_GradientAt(0x0000, 0xF800, 1, 3), Draw_Pack565({16, 0, 0})) << "15.5 rounds up";
    EXPECT_EQ(Draw_GradientAt(0x1234, 0xFFFF, 0, 1), 0x1234) << "a single row takes the top colour";

    DrawCanvas clipped(3, 32);
    ClipScope scope(clipped.surface, {0, 10, 3, 5});
    Draw_FillVerticalGradient(clipped.surface, {0, 0, 3, 32}, 0x0000, 0xF800);
    EXPECT_EQ(clipped.At(1, 12), c.At(1, 12)) << "clipping does not restart the gradient";
    EXPECT_EQ(clipped.At(1, 9), 0u);
}

}  // namespace
