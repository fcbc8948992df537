// Anti-aliased lines and circles: crisp where they follow the grid, areas
// that match the geometry, and nothing drawn outside the clip.
#include "ui/draw/Draw_Shapes.h"
#include "DrawCanvas.h"

#include <cmath>

namespace {

constexpr Colour565 kWhite = 0xFFFF;

double CoveredArea(const DrawCanvas& c) {
    double sum = 0;
    for (int32_t y = 0; y < c.height; ++y)
        for (int32_t x = 0; x < c.width; ++x) sum += Draw_FieldsOfPixel(c.At(x, y)).g / 63.0;
    return sum;
}

TEST(DrawShapes, OnePixelLineThroughPixelCentresIsCrisp) {
    DrawCanvas c(20, 20);
    Draw_Line(c.surface, 2.5f, 10.5f, 12.5f, 10.5f, 1.0f, kWhite);
    for (int32_t x = 0; x < 20; ++x) {
        EXPECT_EQ(c.At(x, 10), x >= 2 && x <= 12 ? Draw_PixelFrom565(kWhite) : 0u) << x;
        EXPECT_EQ(c.At(x, 9), 0u);
        EXPECT_EQ(c.At(x, 11), 0u);
    }
    DrawCanvas v(20, 20);
    Draw_Line(v.surface, 4.5f, 15.5f, 4.5f, 3.5f, 1.0f, kWhite);
    for (int32_t y = 3; y <= 15; ++y) EXPECT_EQ(v.At(4, y), Draw_PixelFrom565(kWhite));
    EXPECT_EQ(v.At(3, 8), 0u);
    EXPECT_EQ(v.At(5, 8), 0u);
}

TEST(DrawShapes, DiagonalLineCoversItsAreaSymmetrically) {
    DrawCanvas c(64, 64);
    Draw_Line(c.surface, 10.0f, 10.0f, 50.0f, 50.0f, 2.0f, kWhite);
    const double length = std::sqrt(2.0) * 40.0;
    // A capsule: the length times the width plus the two half-disc ends. Coverage
    // from the distance to pixel centres is within a few percent of the exact area.
    EXPECT_NEAR(CoveredArea(c), length * 2.0 + 3.14159265, length * 2.0 * 0.05);
    for (int32_t y = 0; y < 64; ++y)
        for (int32_t x = 0; x < 64; ++x) ASSERT_EQ(c.At(x, y), c.At(y, x)) << x << "," << y;
}

TEST(DrawShapes, CirclesHaveTheirAreaAndAnAntiAliasedRim) {
    DrawCanvas c(64, 64);
    Draw_FillCircle(c.surface, 32.0f, 32.0f, 20.0f, kWhite);
    EXPECT_NEAR(CoveredArea(c), 3.14159265 * 400.0, 400.0 * 0.02);
    EXPECT_EQ(c.At(32, 32), Draw_PixelFrom565(kWhite));
    EXPECT_EQ(c.At(32, 10), 0u);
    int partial = 0;
    for (int32_t x = 0; x < 64; ++x) {
        const int32_t g = Draw_FieldsOfPixel(c.At(x, 25)).g;
        partial += g > 0 && g < 63;
    }
    EXPECT_EQ(partial, 2) << "one blended pixel at each end of a row";

    DrawCanvas ring(64, 64);
    Draw_StrokeCircle(ring.surface, 32.0f, 32.0f, 20.0f, 2.0f, kWhite);
    EXPECT_NEAR(CoveredArea(ring), 2.0 * 3.14159265 * 20.0 * 2.0, 251.0 * 0.03);
    EXPECT_EQ(ring.At(32, 32), 0u) << "the ring leaves its centre";
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
    for (int32_t y = 0; y < 40; ++y)
        for (int32_t x = 0; x < 40; ++x)
            if (x < 10 || x >= 20 || y < 10 || y >= 20) {
                ASSERT_EQ(c.At(x, y), 0u) << x << "," << y;
            }
    EXPECT_EQ(c.At(15, 15), Draw_PixelFrom565(kWhite));
}

}  // namespace
