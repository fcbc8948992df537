// Anti-aliased lines and circles draw nothing outside the clip, whatever their
// coordinates. (Their crispness and areas are pinned pixel for pixel by the
// golden picture of the painter's shapes.)
#include "ui/draw/Draw_Shapes.h"
#include "DrawCanvas.h"

#include <cmath>

namespace {

constexpr Colour565 kWhite = 0xFFFF;

TEST(DrawShapes, ShapesStayInsideTheClip) {
    DrawCanvas c(40, 40);
    {
        ClipScope scope(c.surface, {10, 10, 10, 10});
        Draw_Line(c.surface, -100.0f, -50.0f, 140.0f, 90.0f, 5.0f, kWhite);
        Draw_FillCircle(c.surface, 20.0f, 20.0f, 30.0f, kWhite);
        Draw_StrokeCircle(c.surface, 10.0f, 10.0f, 8.0f, 3.0f, kWhite);
        Draw_Line(c.surface, NAN, 0.0f, 5.0f, 5.0f, 1.0f, kWhite);  // nonsense draws nothing, safely
    }
    for (int32_t y = 0; y < 40; ++y)
        for (int32_t x = 0; x < 40; ++x)
            if (x < 10 || x >= 20 || y < 10 || y >= 20) {
                ASSERT_EQ(c.At(x, y), 0u) << x << "," << y;
            }
    EXPECT_EQ(c.At(15, 15), Draw_PixelFrom565(kWhite));
}

}  // namespace
