// Reading the font entry: the shipped font.fnt checked against the documented
// layout, hand-made entries read back, and refusal of anything damaged.
#include "DrawCanvas.h"
#include "FontBuilder.h"
#include "ui/font/Font.h"

#include <cstring>
#include <random>

namespace {

uint32_t U16(const std::vector<uint8_t>& b, size_t at) {
    return b[at] | (uint32_t(b[at + 1]) << 8);
}
uint32_t U32(const std::vector<uint8_t>& b, size_t at) {
    return U16(b, at) | (U16(b, at + 2) << 16);
}

TestFont TwoGlyphs() {
    TestFont f;
    TestGlyph i;
    i.code = 'I';
    i.advance = 18 * kFontSubUnits;
    i.stemX = 2 * kFontSubUnits;
    i.contours = {TestFont_Box(2, 0, 10, 20)};
    TestGlyph r;
    r.code = 0xFFFD;
    r.advance = 10 * kFontSubUnits;
    r.contours = {TestFont_Box(0, 0, 6, 6)};
    f.glyphs = {i, r};
    f.replacement = 1;
    f.kerning = {{0, 0, -2 * kFontSubUnits}};
    return f;
}

TEST(FontLoad, ShippedEntryFollowsTheLayout) {
    const std::vector<uint8_t> b = DrawTest_FontBytes();
    ASSERT_GT(b.size(), 12u) << "resources/font.fnt is missing";
    EXPECT_LT(b.size(), 300u * 1024) << "the entry stays small";
    EXPECT_EQ(std::memcmp(b.data(), "SQF", 3), 0);
    const uint32_t g = U16(b, 8), n = U16(b, 10);
    ASSERT_GE(n, 190u) << "at least Latin-1";
    // The records lie one after another, each its 8-byte head and 2 x (second byte) of body.
    const size_t offsets = 12 + 4 * size_t(n);
    size_t next = offsets + 4 * size_t(g);
    for (uint32_t i = 0; i < g; ++i) {
        const size_t at = U32(b, offsets + 4 * i);
        ASSERT_EQ(at, next) << "glyph " << i;
        next = at + 8 + 2 * size_t(b[at + 1]);
        ASSERT_LE(next, b.size());
    }
    // Then the zones and the kerning pairs, which end the entry.
    const size_t zones = U16(b, next);
    const size_t kerningAt = next + 2 + 4 * zones;
    EXPECT_EQ(zones, 5u);
    EXPECT_EQ(kerningAt + 2 + 6 * U16(b, kerningAt), b.size());
}

TEST(FontLoad, ShippedFontCoversLatin1AndTheTypography) {
    const Font* font = DrawTest_Font();
    ASSERT_NE(font, nullptr);
    EXPECT_EQ(font->designSize, 48);
    EXPECT_EQ(font->letterSpacing, -4) << "minus one twelfth of the design size";
    for (uint32_t c = 0x20; c <= 0xFF; ++c) {
        if (c >= 0x7F && c < 0xA0) continue;
        EXPECT_TRUE(Font_HasCharacter(*font, c)) << std::hex << c;
    }
    for (uint32_t c : {0x2018u, 0x2019u, 0x201Cu, 0x201Du, 0x2013u, 0x2014u, 0x2026u, 0x20ACu, 0x2190u,
                       0x2191u, 0x2192u, 0x2193u, 0x2032u, 0x2033u, 0x2212u, 0xFFFDu})
        EXPECT_TRUE(Font_HasCharacter(*font, c)) << std::hex << c;
    EXPECT_EQ(Font_GlyphFor(*font, 0xFFFD), font->replacementGlyph);
    EXPECT_EQ(Font_GlyphFor(*font, 0x4E00), font->replacementGlyph) << "a character the font lacks";
    EXPECT_NE(Font_GlyphFor(*font, 0xB0), font->replacementGlyph) << "the degree sign";
    EXPECT_NE(Font_GlyphFor(*font, 0xB5), font->replacementGlyph) << "the micro sign";
    EXPECT_LT(Font_Kerning(*font, Font_GlyphFor(*font, 'A'), Font_GlyphFor(*font, 'V')), 0);
    EXPECT_LT(Font_Kerning(*font, Font_GlyphFor(*font, 'T'), Font_GlyphFor(*font, 'o')), 0);
    EXPECT_EQ(Font_Kerning(*font, Font_GlyphFor(*font, 'n'), Font_GlyphFor(*font, 'n')), 0);
}

TEST(FontLoad, HandMadeEntryReadsBack) {
    const std::vector<uint8_t> b = TwoGlyphs().Bytes();
    const auto font = Font_Load(b.data(), b.size());
    ASSERT_NE(font, nullptr);
    EXPECT_EQ(font->designSize, 48);
    EXPECT_EQ(font->ascent, 36 * kFontSubUnits);
    EXPECT_EQ(font->replacementGlyph, 1);
    ASSERT_EQ(font->glyphs.size(), 2u);
    EXPECT_EQ(font->glyphs[0].advance, 18 * kFontSubUnits);
    EXPECT_EQ(font->glyphs[0].stemX, 2 * kFontSubUnits);
    ASSERT_EQ(font->points.size(), 8u);
    EXPECT_EQ(font->points[2].x, 10 * kFontSubUnits);
    EXPECT_EQ(font->points[2].y, 20 * kFontSubUnits);
    EXPECT_EQ(Font_GlyphFor(*font, 'I'), 0);
    EXPECT_EQ(Font_GlyphFor(*font, 'J'), 1);
    EXPECT_EQ(Font_Kerning(*font, 0, 0), -2 * kFontSubUnits);
    EXPECT_EQ(Font_Kerning(*font, 0, 1), 0);
    EXPECT_EQ(Font_Scale(*font, 18), (18 << 10) / 48);
}

TEST(FontLoad, RefusesWhatDoesNotBeginWithSQF) {
    std::vector<uint8_t> b = TwoGlyphs().Bytes();
    EXPECT_EQ(Font_Load(nullptr, 0), nullptr);
    EXPECT_EQ(Font_Load(b.data(), 3), nullptr);
    for (int i = 0; i < 3; ++i) {
        std::vector<uint8_t> bad = b;
        bad[i] ^= 0x20;  // "sQF", "SqF", "SQf"
        EXPECT_EQ(Font_Load(bad.data(), bad.size()), nullptr) << i;
    }
    EXPECT_NE(Font_Load(b.data(), b.size()), nullptr);
}

TEST(FontLoad, RefusesEveryTruncationAndBrokenTables) {
    const std::vector<uint8_t> b = TwoGlyphs().Bytes();
    for (size_t n = 0; n < b.size(); ++n) EXPECT_EQ(Font_Load(b.data(), n), nullptr) << n << " bytes";

    auto broken = [&](auto change) {
        std::vector<uint8_t> c = b;
        change(c);
        return Font_Load(c.data(), c.size()) == nullptr;
    };
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
