// The font: hand-made entries that follow the documented layout read back,
// and anything damaged is refused or drawn safely; glyphs rendered from
// hand-made outlines whose pixels are known exactly (overlapping contours,
// the kerning and spacing of the pen); text set in the shipped font (UTF-8
// and unknown characters, clipping and the glyph cache).
// (The shipped entry's characters and kerning, boxes on the grid, the scale
// rule, implied on-curve points, the stem alignment, where ink lands in the
// line box and how text wraps show in the specimen picture and the toolkit's
// golden pictures.)
#include "DrawCanvas.h"
#include "support/LittleEndian.h"
#include "ui/font/Font_Format.h"
#include "ui/font/Utf8.h"

#include <initializer_list>
#include <random>
#include <tuple>

namespace {

// Small font entries written by hand, following the documented layout, so
// that the reader is checked against the layout rather than against the tool
// that made the shipped font.
struct TestGlyph {
    uint16_t code = 0;
    uint16_t advance = 0;  // sub-units
    int16_t stemX = 0;
    // Contours of (x, y) points in sub-units, all on the curve.
    std::vector<std::vector<std::pair<int, int>>> contours;
};

struct TestFont {
    uint8_t designSize = 48;
    uint16_t ascent = 36 * kFontSubUnits;
    uint16_t replacement = 0;
    std::vector<TestGlyph> glyphs;  // glyph i maps from glyphs[i].code; codes ascending
    std::vector<std::tuple<uint16_t, uint16_t, int16_t>> kerning;

    static void Put16(std::vector<uint8_t>& out, std::initializer_list<int> values) {
        for (int v : values) LittleEndian_Append(out, uint64_t(v), 2);
    }

    std::vector<uint8_t> Bytes() const {
        std::vector<uint8_t> out = {'S', 'Q', 'F', designSize};
        Put16(out, {ascent, replacement, int(glyphs.size()), int(glyphs.size())});
        for (const auto& g : glyphs) Put16(out, {g.code});
        for (size_t i = 0; i < glyphs.size(); ++i) Put16(out, {int(i)});
        const size_t offsets = out.size();
        out.resize(out.size() + 4 * glyphs.size());
        for (size_t i = 0; i < glyphs.size(); ++i) {
            const uint32_t at = uint32_t(out.size());
            LittleEndian_Set(out, offsets + 4 * i, at, 4);
            const TestGlyph& g = glyphs[i];
            // Every delta as an i16: the long form, which the reader must take too.
            std::vector<uint8_t> counts, flags, xs, ys;
            int lx = 0, ly = 0;
            for (size_t c = 0; c < g.contours.size(); ++c) {
                counts.push_back(uint8_t(g.contours[c].size()));
                for (auto [x, y] : g.contours[c]) {
                    flags.push_back(kFontOnCurve);
                    Put16(xs, {x - lx});
                    Put16(ys, {y - ly});
                    lx = x;
                    ly = y;
                }
            }
            std::vector<uint8_t> body = counts;
            for (const auto* part : {&flags, &xs, &ys}) body.insert(body.end(), part->begin(), part->end());
            if (body.size() % 2) body.push_back(0);
            out.push_back(uint8_t(g.contours.size()));
            out.push_back(uint8_t(body.size() / 2));
            Put16(out, {g.advance, g.stemX, 0});  // no second stem
            out.insert(out.end(), body.begin(), body.end());
        }
        Put16(out, {0});  // no zones
        Put16(out, {int(kerning.size())});
        for (auto [l, r, a] : kerning) Put16(out, {l, r, a});
        return out;
    }
};

// A box from (x0, y0) to (x1, y1) in design units, as one clockwise contour.
std::vector<std::pair<int, int>> TestFont_Box(int x0, int y0, int x1, int y1) {
    const int s = kFontSubUnits;
    return {{x0 * s, y0 * s}, {x0 * s, y1 * s}, {x1 * s, y1 * s}, {x1 * s, y0 * s}};
}

// A box 8 x 20 design units standing on the baseline at x 2, advance 18 units
// (14 after the default spacing of -4), its stem at x 2.
TestGlyph TestFont_BoxGlyph(uint16_t code) {
    constexpr int s = kFontSubUnits;
    return {.code = code, .advance = 18 * s, .stemX = 2 * s, .contours = {TestFont_Box(2, 0, 10, 20)}};
}

std::unique_ptr<Font> TestFont_Load(const TestFont& f) {
    const std::vector<uint8_t> b = f.Bytes();
    return Font_Load(b.data(), b.size());
}

// A font of the given glyphs, their codes ascending, and kerning pairs.
std::unique_ptr<Font> TestFont_LoadGlyphs(std::vector<TestGlyph> glyphs,
                                          std::vector<std::tuple<uint16_t, uint16_t, int16_t>> kerning = {}) {
    return TestFont_Load({.glyphs = std::move(glyphs), .kerning = std::move(kerning)});
}

constexpr Colour565 kWhite = 0xFFFF;
const uint32_t kFull = Draw_PixelFrom565(kWhite);

// 'I' and the replacement glyph, kerned against itself.
TestFont TwoGlyphs() {
    const TestGlyph r{.code = 0xFFFD, .advance = 10 * kFontSubUnits, .contours = {TestFont_Box(0, 0, 6, 6)}};
    return {.replacement = 1, .glyphs = {TestFont_BoxGlyph('I'), r}, .kerning = {{0, 0, -2 * kFontSubUnits}}};
}

TEST(FontLoad, HandMadeEntryReadsBackAndEveryTruncationOrBrokenTableIsRefused) {
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
    const size_t glyph0 = LittleEndian_Get(b, 20, 4);
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

TEST(FontRender, AdvanceSpacingAndKerningMoveThePenAndOverlapsDoNotCancel) {
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
    // Overlapping contours do not cancel or overflow.
    TestGlyph g = TestFont_BoxGlyph('I');
    g.contours.push_back(TestFont_Box(6, 0, 14, 20));  // overlaps the first box in x 6..10
    const auto overlapping = TestFont_LoadGlyphs({g});
    DrawCanvas o(40, 30);
    Font_DrawText(o.surface, *overlapping, 0, 25, 48, "I", kWhite);
    for (int32_t x = 2; x < 14; ++x) EXPECT_EQ(o.At(x, 15), kFull) << x;
    EXPECT_EQ(o.At(14, 15), 0u);
}

TEST(FontUtf8, DecodesValidSequencesAndReplacesMalformedOnesByteByByte) {
    auto decode = [](std::string_view s) {
        std::vector<uint32_t> out;
        for (size_t at = 0; at < s.size();) out.push_back(Utf8_Next(s, &at));
        return out;
    };
    constexpr uint32_t r = 0xFFFD;
    const std::pair<std::string_view, std::vector<uint32_t>> cases[] = {
        {"A\xC2\xB5\xE2\x86\x92\xF0\x9F\x98\x80", {'A', 0xB5, 0x2192, 0x1F600}},
        {"\xED\xA0\x80", {r, r, r}},         // a surrogate
        {"\xE0\x80\x80", {r, r, r}},         // overlong
        {"\xF4\x90\x80\x80", {r, r, r, r}},  // past U+10FFFF
        {"\xE2\x86\x41", {r, r, 'A'}},       // cut short by an "A"
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(decode(text), expected) << text;
}

class FontText : public ::testing::Test {
protected:
    void SetUp() override {
        font = DrawTest_Font();
        ASSERT_NE(font, nullptr) << "resources/font.fnt did not load";
    }
    int32_t Width(int32_t height, std::string_view text) {
        return Font_MeasureText(*font, height, text).width;
    }
    const Font* font = nullptr;
};

TEST_F(FontText, ControlUnknownAndBrokenCharactersAndTextClippedAndCached) {
    const std::string r = "\xEF\xBF\xBD";  // U+FFFD
    EXPECT_GT(Width(14, r), 0);
    EXPECT_NE(Width(14, "\xC2\xB0"), Width(14, r)) << "the degree sign decodes";
    // Each text takes the room of the one beside it.
    for (auto [text, same] : {std::pair<std::string, std::string>{"A\tB\r\x7F", "AB"},  // controls take none
                              {"\xE4\xB8\x80", r},   // U+4E00 is not in the font
                              {"\xFF", r},           // a byte that starts nothing
                              {"\xC3", r},           // a sequence cut short
                              {"\xC0\xAF", r + r}})  // an overlong slash, byte by byte
        EXPECT_EQ(Width(14, text), Width(14, same)) << text;
    // Text is clipped, and cached renderings repeat exactly.
    DrawCanvas whole(200, 40), part(200, 40), again(200, 40);
    Font_DrawText(whole.surface, *font, 5, 30, 18, "Clip the text here", kWhite);
    {
        ClipScope scope(part.surface, {40, 0, 50, 25});
        Font_DrawText(part.surface, *font, 5, 30, 18, "Clip the text here", kWhite);
    }
    DrawTest_ExpectPixels(part, [&](int32_t x, int32_t y) {
        return DrawTest_Inside({40, 0, 50, 25}, x, y) ? whole.At(x, y) : 0u;
    });
    // Other sizes in between do not change what a size draws.
    for (int32_t h = 8; h < 30; ++h) Font_MeasureText(*font, h, "x");
    Font_DrawText(again.surface, *font, 5, 30, 18, "Clip the text here", kWhite);
    EXPECT_EQ(again.pixels, whole.pixels);
}

}  // namespace
