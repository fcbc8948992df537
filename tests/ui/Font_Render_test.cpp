// Glyph rendering on hand-made outlines whose pixels are known exactly:
// boxes on the grid, the scale rule, overlapping contours, implied on-curve
// points, the stem alignment and the kerning and spacing of the pen.
#include "DrawCanvas.h"
#include "FontBuilder.h"
#include "ui/font/Font.h"

namespace {

constexpr Colour565 kWhite = 0xFFFF;
const uint32_t kFull = Draw_PixelFrom565(kWhite);

TEST(FontRender, BoxOnTheGridFillsExactlyItsPixelsAndItsStemLandsOnAPixelBoundary) {
    const auto font = TestFont_LoadGlyphs({TestFont_BoxGlyph('I')});
    ASSERT_NE(font, nullptr);
    // At the design size one design unit is one pixel; at half of it, half a pixel.
    for (auto [height, unit] : {std::pair{48, 2}, std::pair{24, 1}}) {
        DrawCanvas c(40, 40);
        const int32_t width = Font_DrawText(c.surface, *font, 5, 30, height, "I", kWhite);
        EXPECT_EQ(width, 14 * unit / 2);
        SCOPED_TRACE(height);
        DrawTest_ExpectPixels(c, [unit](int32_t x, int32_t y) {
            return DrawTest_Inside({5 + unit, 30 - 10 * unit, 4 * unit, 10 * unit}, x, y) ? kFull : 0u;
        });
    }

    // At height 36 a unit is 0.75 px: the box's left edge at 2 units would be
    // at 1.5 px; the stem alignment moves it to a whole pixel.
    DrawCanvas c(20, 30);
    Font_DrawText(c.surface, *font, 0, 25, 36, "I", kWhite);
    int32_t firstFull = -1;
    for (int32_t x = 0; x < 20 && firstFull < 0; ++x)
        if (c.At(x, 20) == kFull) firstFull = x;
    ASSERT_GE(firstFull, 1);
    EXPECT_EQ(c.At(firstFull - 1, 20), 0u) << "no half-covered column left of the stem";

    // No stem: the designed place, half a pixel off the grid.
    const auto soft = TestFont_LoadGlyphs({TestFont_BoxGlyph('I', 0)});
    DrawCanvas d(20, 30);
    Font_DrawText(d.surface, *soft, 0, 25, 36, "I", kWhite);
    const int32_t g = Draw_FieldsOfPixel(d.At(1, 20)).g;
    EXPECT_GT(g, 0);
    EXPECT_LT(g, 63);
}

TEST(FontRender, AdvanceSpacingAndKerningMoveThePen) {
    const auto font =
        TestFont_LoadGlyphs({TestFont_BoxGlyph('I'), TestFont_BoxGlyph('J')}, {{0, 1, -3 * kFontSubUnits}});
    ASSERT_NE(font, nullptr);
    EXPECT_EQ(Font_MeasureText(*font, 48, "II").width, 28);
    EXPECT_EQ(Font_MeasureText(*font, 48, "IJ").width, 25) << "kerned by 3 units";
    EXPECT_EQ(Font_MeasureText(*font, 48, "JI").width, 28) << "pairs are ordered";
    font->letterSpacing = 0;
    EXPECT_EQ(Font_MeasureText(*font, 48, "II").width, 36) << "the advance holds the spacing's allowance";
    font->letterSpacing = -4;
    const TextMetrics m = Font_MeasureText(*font, 48, "I");
    EXPECT_EQ(std::pair(m.ascent, m.descent), std::pair(36, 12));

    DrawCanvas c(60, 30);
    EXPECT_EQ(Font_DrawText(c.surface, *font, 0, 25, 48, "IJ", kWhite), 25);
    // I covers 2..9, J starts at 14 - 3 + 2.
    for (auto [x, inked] :
         {std::pair{2, true}, {9, true}, {10, false}, {12, false}, {13, true}, {20, true}, {21, false}})
        EXPECT_EQ(c.At(x, 20), inked ? kFull : 0u) << x;
}

TEST(FontRender, OverlappingContoursDoNotCancelOrOverflow) {
    TestGlyph g = TestFont_BoxGlyph('I');
    g.contours.push_back(TestFont_Box(6, 0, 14, 20));  // overlaps the first box in x 6..10
    const auto font = TestFont_LoadGlyphs({g});
    DrawCanvas c(40, 30);
    Font_DrawText(c.surface, *font, 0, 25, 48, "I", kWhite);
    for (int32_t x = 2; x < 14; ++x) EXPECT_EQ(c.At(x, 15), kFull) << x;
    EXPECT_EQ(c.At(14, 15), 0u);
}

TEST(FontRender, TwoControlPointsImplyTheOnCurvePointBetween) {
    // A rounded cap: (0,0) on, (0,16) off, (8,16) on, (16,16) off, (16,0) on;
    // the same with the middle point left out must draw the same pixels.
    const int s = kFontSubUnits;
    const TestGlyph with{.code = 'A',
                         .advance = 24 * s,
                         .contours = {{{0, 0}, {0, 16 * s}, {8 * s, 16 * s}, {16 * s, 16 * s}, {16 * s, 0}}},
                         .offCurve = {{0, 1}, {0, 3}}};
    const TestGlyph without{.code = 'B',
                            .advance = 24 * s,
                            .contours = {{{0, 0}, {0, 16 * s}, {16 * s, 16 * s}, {16 * s, 0}}},
                            .offCurve = {{0, 1}, {0, 2}}};
    const auto font = TestFont_LoadGlyphs({with, without});
    ASSERT_NE(font, nullptr);
    DrawCanvas a(30, 30), b(30, 30);
    Font_DrawText(a.surface, *font, 2, 25, 48, "A", kWhite);
    Font_DrawText(b.surface, *font, 2, 25, 48, "B", kWhite);
    EXPECT_EQ(a.pixels, b.pixels);
    EXPECT_EQ(a.At(10, 24), kFull) << "inside near the base";
    EXPECT_EQ(a.At(2, 10), 0u) << "the curve leaves the corner out";
    EXPECT_EQ(a.At(10, 8), 0u) << "nothing above the top of the curve at 16 units";
}

}  // namespace
