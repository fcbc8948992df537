// Glyph rendering on hand-made outlines whose pixels are known exactly:
// overlapping contours, and the kerning and spacing of the pen. (Boxes on the
// grid, the scale rule, implied on-curve points and the stem alignment show in
// the shipped font's specimen picture.)
#include "DrawCanvas.h"
#include "FontBuilder.h"
#include "ui/font/Font.h"

namespace {

constexpr Colour565 kWhite = 0xFFFF;
const uint32_t kFull = Draw_PixelFrom565(kWhite);

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

}  // namespace
