// Anti-aliased shapes at their limits: clipping of rounded rectangles, lines
// and circles whatever their coordinates. (Crisp edges, symmetric corners,
// areas, gradients and one-pixel outlines are pinned pixel for pixel by the
// golden picture of the painter's shapes.)
#include "ui/draw/Draw_Shapes.h"
#include "DrawCanvas.h"
#include "ui/draw/Draw_RoundRect.h"

#include <cmath>

namespace {

constexpr Colour565 kWhite = 0xFFFF;

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
