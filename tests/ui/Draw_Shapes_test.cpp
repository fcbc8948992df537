// Anti-aliased shapes at their limits: rounded rectangles with no radius or
// a radius held to a disc, and clipping, of lines and circles too whatever
// their coordinates. (Crisp edges, symmetric corners, areas, gradients and
// one-pixel outlines are pinned pixel for pixel by the golden picture of the
// painter's shapes.)
#include "ui/draw/Draw_Shapes.h"
#include "DrawCanvas.h"
#include "ui/draw/Draw_Rect.h"
#include "ui/draw/Draw_RoundRect.h"

#include <cmath>

namespace {

constexpr Colour565 kWhite = 0xFFFF;
const uint32_t kWhitePixel = Draw_PixelFrom565(kWhite);

// Red field of a white-on-black drawing: 0 (untouched) to 31 (full).
int32_t Level(const DrawCanvas& c, int32_t x, int32_t y) {
    return Draw_FieldsOfPixel(c.At(x, y)).r;
}

TEST(DrawRoundRect, RadiusZeroIsAPlainFillOrOutlineAndFullRadiusADisc) {
    DrawCanvas a(14, 10), b(14, 10);
    Draw_FillRoundRect(a.surface, {1, 2, 9, 5}, 0.0f, kWhite);
    Draw_FillRect(b.surface, {1, 2, 9, 5}, kWhite);
    EXPECT_EQ(a.pixels, b.pixels);
    Draw_StrokeRoundRect(a.surface, {1, 1, 12, 8}, 0.0f, 2.0f, 0xF800);
    Draw_StrokeRect(b.surface, {1, 1, 12, 8}, 2, 0xF800);
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

TEST(DrawRoundRect, ClippingCutsWithoutChangingWhatIsDrawn) {
    DrawCanvas whole(40, 30), part(40, 30);
    Draw_FillRoundRect(whole.surface, {3, 3, 34, 24}, 9.0f, kWhite);
    Draw_StrokeRoundRect(whole.surface, {3, 3, 34, 24}, 9.0f, 2.5f, 0xF800);
    {
        ClipScope scope(part.surface, {0, 0, 12, 11});
        Draw_FillRoundRect(part.surface, {3, 3, 34, 24}, 9.0f, kWhite);
        Draw_StrokeRoundRect(part.surface, {3, 3, 34, 24}, 9.0f, 2.5f, 0xF800);
    }
    DrawTest_ExpectPixels(part, [&](int32_t x, int32_t y) { return x < 12 && y < 11 ? whole.At(x, y) : 0u; });
    EXPECT_TRUE(part.PaddingIs(0));
}

TEST(DrawShapes, ShapesStayInsideTheClip) {
    DrawCanvas c(40, 40);
    {
        ClipScope scope(c.surface, {10, 10, 10, 10});
        Draw_Line(c.surface, -100.0f, -50.0f, 140.0f, 90.0f, 5.0f, kWhite);
        Draw_FillCircle(c.surface, 20.0f, 20.0f, 30.0f, kWhite);
        Draw_StrokeCircle(c.surface, 10.0f, 10.0f, 8.0f, 3.0f, kWhite);
        Draw_Line(c.surface, NAN, 0.0f, 5.0f, 5.0f, 1.0f, kWhite);  // nonsense draws nothing, safely
    }
    DrawTest_ExpectPixels(c, [&](int32_t x, int32_t y) {
        return DrawTest_Inside({10, 10, 10, 10}, x, y) ? c.At(x, y) : 0u;
    });
    EXPECT_EQ(c.At(15, 15), Draw_PixelFrom565(kWhite));
}

}  // namespace
