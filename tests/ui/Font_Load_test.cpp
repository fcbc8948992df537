// Reading the font entry: hand-made entries that follow the documented layout
// read back, and anything damaged is refused or drawn safely. (The shipped
// entry's characters and kerning show in the specimen picture.)
#include "DrawCanvas.h"
#include "FontBuilder.h"
#include "ui/font/Font.h"

#include <random>

namespace {

uint32_t U16(const std::vector<uint8_t>& b, size_t at) {
    return b[at] | (uint32_t(b[at + 1]) << 8);
}
uint32_t U32(const std::vector<uint8_t>& b, size_t at) {
    return U16(b, at) | (U16(b, at + 2) << 16);
}

// 'I' and the replacement glyph, kerned against itself.
TestFont TwoGlyphs() {
    TestFont f;
    TestGlyph r;
    r.code = 0xFFFD;
    r.advance = 10 * kFontSubUnits;
    r.contours = {TestFont_Box(0, 0, 6, 6)};
    f.glyphs = {TestFont_BoxGlyph('I'), r};
    f.replacement = 1;
    f.kerning = {{0, 0, -2 * kFontSubUnits}};
    return f;
}

TEST(FontLoad, HandMadeEntryReadsBack) {
    const auto font = TestFont_Load(TwoGlyphs());
    ASSERT_NE(font, nullptr);
    ASSERT_EQ(font->glyphs.size(), 2u);
    ASSERT_EQ(font->points.size(), 8u);
    constexpr int64_t u = kFontSubUnits;
    // Design size, ascent, replacement; 'I''s advance and stem; its third point;
    // glyphs of 'I' and 'J'; kerning of I-I and I-replacement; the scale at 18 px.
    EXPECT_EQ(
        (std::vector<int64_t>{font->designSize, font->ascent, font->replacementGlyph, font->glyphs[0].advance,
                              font->glyphs[0].stemX, font->points[2].x, font->points[2].y,
                              Font_GlyphFor(*font, 'I'), Font_GlyphFor(*font, 'J'), Font_Kerning(*font, 0, 0),
                              Font_Kerning(*font, 0, 1), Font_Scale(*font, 18)}),
        (std::vector<int64_t>{48, 36 * u, 1, 18 * u, 2 * u, 10 * u, 20 * u, 0, 1, -2 * u, 0,
                              (18 << 10) / 48}));
}

TEST(FontLoad, RefusesAnotherMagicEveryTruncationAndBrokenTables) {
    const std::vector<uint8_t> b = TwoGlyphs().Bytes();
    for (size_t n = 0; n < b.size(); ++n) EXPECT_EQ(Font_Load(b.data(), n), nullptr) << n << " bytes";

    auto broken = [&](auto change) {
        std::vector<uint8_t> c = b;
        change(c);
        return Font_Load(c.data(), c.size()) == nullptr;
    };
    EXPECT_EQ(Font_Load(nullptr, 0), nullptr);
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(broken([i](auto& c) { c[i] ^= 0x20; })) << "sQF, SqF, SQf";
    EXPECT_TRUE(broken([](auto& c) { c[3] = 0; })) << "design size 0";
    EXPECT_TRUE(broken([](auto& c) { c[6] = 2; })) << "replacement beyond the glyphs";
    EXPECT_TRUE(broken([](auto& c) { c[12] = 0xFF, c[13] = 0xFF; })) << "code points out of order";
    EXPECT_TRUE(broken([](auto& c) { c[16] = 5; })) << "a character of a missing glyph";
    EXPECT_TRUE(broken([](auto& c) { c[20] = 0xF0, c[21] = 0xFF; })) << "a glyph offset past the end";
    const size_t glyph0 = U32(b, 20);
    EXPECT_TRUE(broken([&](auto& c) { c[glyph0 + 8] = 200; })) << "more points than the body holds";
    EXPECT_TRUE(broken([&](auto& c) { c[glyph0 + 9] = 0; })) << "a contour starting off the curve";
    EXPECT_TRUE(broken([&](auto& c) { c[glyph0 + 1] = 200; })) << "a body past the end";
    std::vector<uint8_t> bigger = b;
    bigger.push_back(0);
    EXPECT_NE(Font_Load(bigger.data(), bigger.size()), nullptr) << "bytes after the tables are ignored";
}

// The archive is data: a damaged font entry is either refused or drawn
// without touching memory outside its tables or the surface (the sanitizer
// build checks the second part).
TEST(FontLoad, DamagedEntriesAreRefusedOrDrawnSafely) {
    const std::vector<uint8_t> good = DrawTest_FontBytes();
    ASSERT_FALSE(good.empty());
    std::string text;
    for (uint32_t c = 0x21; c < 0x7F; ++c) text += char(c);
    text += "\xC2\xB0\xC2\xB5\xE2\x86\x92\xEF\xBF\xBD";
    std::mt19937 random(12345);
    int loaded = 0;
    for (int round = 0; round < 300; ++round) {
        std::vector<uint8_t> b = good;
        const int changes = 1 + int(random() % 8);
        for (int k = 0; k < changes; ++k) {
            // Most damage lands in the header and tables, where it matters most.
            const size_t at =
                random() % 2 ? random() % std::min<size_t>(b.size(), 2048) : random() % b.size();
            b[at] = uint8_t(random());
        }
        if (random() % 8 == 0) b.resize(random() % b.size());
        const auto font = Font_Load(b.data(), b.size());
        if (!font) continue;
        ++loaded;
        DrawCanvas c(160, 48);
        for (int32_t h : {1, 12, 40}) {
            Font_DrawText(c.surface, *font, 4, 36, h, text, 0xFFFF);
            Font_WrapText(*font, h, text, 100);
        }
        Font_DrawText(c.surface, *font, -300, 400, 5000, "Wg\xEF\xBF\xBD",
                      0xFFFF);  // held to the largest size
        ASSERT_TRUE(c.PaddingIs(0)) << "round " << round;
    }
    EXPECT_GT(loaded, 10) << "most single changes to glyph bodies still load";
}

}  // namespace
