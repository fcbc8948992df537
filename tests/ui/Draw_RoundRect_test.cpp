// Anti-aliased rounded rectangles: crisp straight edges, symmetric corners,
// coverage that grows towards the inside, clipping and the 5-6-5 rule.
#include "ui/draw/Draw_RoundRect.h"
#include "DrawCanvas.h"
#include "ui/draw/Draw_Rect.h"

namespace {

constexpr Colour565 kWhite = 0xFFFF;
const uint32_t kWhitePixel = Draw_PixelFrom565(kWhite);

// Red field of a white-on-black drawing: 0 (untouched) to 31 (full).
int32_t Level(const DrawCanvas& c, int32_t x, int32_t y) {
    return Draw_FieldsOfPixel(c.At(x, y)).r;
}

TEST(DrawRoundRect, StraightEdgesAreCrispAndCornersAntiAliased) {
    DrawCanvas c(30, 20);
    Draw_FillRoundRect(c.surface, {5, 4, 20, 12}, 5.0f, kWhite);
    for (int32_t y = 9; y < 11; ++y) {  // rows clear of the corners
        EXPECT_EQ(c.At(4, y), 0u);
        EXPECT_EQ(c.At(5, y), kWhitePixel);
        EXPECT_EQ(c.At(24, y), kWhitePixel);
        EXPECT_EQ(c.At(25, y), 0u);
    }
    for (int32_t x = 10; x < 20; ++x) {  // columns clear of the corners
        EXPECT_EQ(c.At(x, 3), 0u);
        EXPECT_EQ(c.At(x, 4), kWhitePixel);
        EXPECT_EQ(c.At(x, 15), kWhitePixel);
        EXPECT_EQ(c.At(x, 16), 0u);
    }
    EXPECT_EQ(c.At(5, 4), 0u) << "the corner pixel lies outside the arc";
    // Along the corner's diagonal coverage rises from outside to inside.
    int32_t previous = -1, partial = 0;
    for (int32_t k = 0; k < 5; ++k) {
        const int32_t level = Level(c, 5 + k, 4 + k);
        EXPECT_GE(level, previous);
        previous = level;
        partial += level > 0 && level < 31;
    }
    EXPECT_GE(partial, 1) << "the arc is anti-aliased";
    EXPECT_EQ(previous, 31);
    for (uint32_t p : c.pixels) ASSERT_EQ(p, Draw_Quantize(p)) << "every pixel keeps the 5-6-5 rule";
}

TEST(DrawRoundRect, CornersAreMirrorImages) {
    DrawCanvas c(31, 17);
    Draw_FillRoundRect(c.surface, {2, 1, 27, 15}, 6.5f, kWhite);
    for (int32_t y = 0; y < 17; ++y)
        for (int32_t x = 0; x < 31; ++x) {
            ASSERT_EQ(c.At(x, y), c.At(30 - x, y)) << x << "," << y;
            ASSERT_EQ(c.At(x, y), c.At(x, 16 - y)) << x << "," << y;
        }
}

TEST(DrawRoundRect, RadiusZeroIsAPlainFillAndFullRadiusADisc) {
    DrawCanvas a(12, 9), b(12, 9);
    Draw_FillRoundRect(a.surface, {1, 2, 9, 5}, 0.0f, kWhite);
    Draw_FillRect(b.surface, {1, 2, 9, 5}, kWhite);
    EXPECT_EQ(a.pixels, b.pixels);

    DrawCanvas disc(21, 21);
    Draw_FillRoundRect(disc.surface, {0, 0, 21, 21}, 100.0f, kWhite);  // held to 10.5
    EXPECT_EQ(disc.At(10, 0), kWhitePixel) << "the top of the disc touches the top edge";
    EXPECT_EQ(disc.At(0, 0), 0u);
    EXPECT_EQ(disc.At(10, 10), kWhitePixel);
    int64_t sum = 0;
    for (int32_t y = 0; y < 21; ++y)
        for (int32_t x = 0; x < 21; ++x) sum += Level(disc, x, y);
    EXPECT_NEAR(double(sum) / 31.0, 3.14159265 * 10.5 * 10.5, 3.0) << "the area of a circle of radius 10.5";
}

TEST(DrawRoundRect, GradientFillFollowsTheRowsInsideTheShape) {
    DrawCanvas c(20, 16);
    Draw_FillRoundRectGradient(c.surface, {0, 0, 20, 16}, 4.0f, 0x0000, 0xF800);
    for (int32_t y = 0; y < 16; ++y)
        EXPECT_EQ(c.At(10, y), Draw_PixelFrom565(Draw_GradientAt(0x0000, 0xF800, y, 16)));
    EXPECT_EQ(c.At(0, 0), 0u);
}

TEST(DrawRoundRect, StrokeLeavesTheInsideAndOutsideUntouched) {
    const uint32_t ground = Draw_PixelFrom565(0x2104);
    DrawCanvas c(40, 24, ground);
    Draw_StrokeRoundRect(c.surface, {4, 4, 32, 16}, 6.0f, 1.0f, kWhite);
    EXPECT_EQ(c.At(20, 12), ground);
    EXPECT_EQ(c.At(20, 3), ground);
    EXPECT_EQ(c.At(20, 4), kWhitePixel) << "a one-pixel outline on the grid is crisp";
    EXPECT_EQ(c.At(20, 5), ground);
    EXPECT_EQ(c.At(4, 12), kWhitePixel);
    EXPECT_EQ(c.At(35, 12), kWhitePixel);
    EXPECT_EQ(c.At(5, 12), ground);
    EXPECT_EQ(c.At(4, 4), ground) << "rounded away at the corner";

    DrawCanvas a(14, 10), b(14, 10);
    Draw_StrokeRoundRect(a.surface, {1, 1, 12, 8}, 0.0f, 2.0f, kWhite);
    Draw_StrokeRect(b.surface, {1, 1, 12, 8}, 2, kWhite);
    EXPECT_EQ(a.pixels, b.pixels) << "square corners give the plain outline";
}

TEST(DrawRoundRect, ClippingCutsWithoutChangingWhatIsDrawn) {
    DrawCanvas whole(40, 30), part(40, 30);
    Draw_FillRoundRect(whole.surface, {3, 3, 34, 24}, 9.0f, kWhite);
    Draw_StrokeRoundRect(whole.surface, {3, 3, 34, 24}, 9.0f, 2.5f, 0xF800);
    {
        ClipScope scope(part.surface, {0, 0, 12, 11});
        Draw_FillRoundRect(part.surface, {3, 3, 34, 24}, 9.0f, kWhite);
        Draw_StrokeRoundRect(part.surface, {3, 3, 34, 24}, 9.0f, 2.5f, 0xF800);
    }
    for (int32_t y = 0; y < 30; ++y)
        for (int32_t x = 0; x < 40; ++x)
            ASSERT_EQ(part.At(x, y), x < 12 && y < 11 ? whole.At(x, y) : 0u) << x << "," << y;
    EXPECT_TRUE(part.PaddingIs(0));
}

}  // namespace
