// Setting text in the shipped font: the line box, UTF-8 and unknown
// characters, where the ink lands, clipping, and wrapping to a width. (How
// the glyphs look, crisp stems and kerning included, is pinned by the specimen
// picture.)
#include "DrawCanvas.h"
#include "ui/font/Font.h"
#include "ui/font/Utf8.h"

#include <algorithm>

namespace {

constexpr Colour565 kWhite = 0xFFFF;
const uint32_t kFull = Draw_PixelFrom565(kWhite);

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

TEST_F(FontText, ControlAndUnknownCharactersAndBrokenUtf8) {
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

// The line box is the height, and ink stays inside the measured box.
TEST_F(FontText, InkStaysInTheMeasuredBoxAndDrawingReturnsTheWidth) {
    for (int32_t h : {9, 12, 14, 18, 32}) {
        const std::string_view text = "Hxgy AVÉÅj";
        DrawCanvas c(400, 100);
        const int32_t x = 20, baseline = 60;
        const TextMetrics m = Font_MeasureText(*font, h, text);
        EXPECT_EQ(m.ascent + m.descent, h);
        EXPECT_GT(m.descent, 0);
        EXPECT_EQ(Width(h, ""), 0);
        EXPECT_EQ(Font_DrawText(c.surface, *font, x, baseline, h, text, kWhite), m.width);
        int inked = 0;
        for (int32_t py = 0; py < 100; ++py)
            for (int32_t px = 0; px < 400; ++px) {
                if (c.At(px, py) == 0) continue;
                ++inked;
                ASSERT_GE(px, x - 1) << h;
                ASSERT_LT(px, x + m.width + 1) << h;
                ASSERT_GE(py, baseline - m.ascent) << h;
                ASSERT_LT(py, baseline + m.descent) << h;
            }
        EXPECT_GT(inked, h * 4);
        EXPECT_TRUE(c.PaddingIs(0));
    }
    // Twice the height, twice the width within a pixel per letter.
    const std::string_view text = "Denoise 12.5";
    EXPECT_NEAR(Width(24, text), 2 * Width(12, text), double(text.size()));
    EXPECT_NEAR(Width(36, text), 3 * Width(12, text), double(text.size()));
}

TEST_F(FontText, TextIsClippedAndCachedRenderingsRepeatExactly) {
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

TEST_F(FontText, WrappingKeepsLinesWithinTheWidthAndLosesNoWord) {
    const std::string text =
        "The stacking artefacts were removed before the stretch, and the background gradient is gone.\n"
        "Second paragraph.";
    for (int32_t maxWidth : {60, 120, 240, 2000}) {
        const std::vector<TextLine> lines = Font_WrapText(*font, 14, text, maxWidth);
        std::string joined;
        for (const TextLine& l : lines) {
            const std::string_view s = std::string_view(text).substr(l.begin, l.length);
            EXPECT_LE(l.width, maxWidth) << s;
            EXPECT_EQ(l.width, Width(14, s));
            EXPECT_FALSE(!s.empty() && s.back() == ' ') << "trailing spaces are dropped";
            joined += std::string(s) + " ";
        }
        std::string expected = text;
        std::replace(expected.begin(), expected.end(), '\n', ' ');
        if (maxWidth >= 120) {  // every word fits a line: breaks fall at spaces only
            EXPECT_EQ(joined, expected + " ") << maxWidth;
        } else {
            auto letters = [](std::string t) { return std::erase(t, ' '), t; };
            EXPECT_EQ(letters(joined), letters(expected)) << maxWidth;
        }
        EXPECT_GE(lines.size(), 2u) << "the line feed always breaks";
        EXPECT_TRUE(maxWidth != 2000 || lines.size() == 2u) << lines.size() << " lines";
    }
    // A word wider than the line is broken between characters, never lost.
    const std::vector<TextLine> lines = Font_WrapText(*font, 14, "Supercalifragilistic", 30);
    ASSERT_GT(lines.size(), 2u);
    size_t total = 0;
    for (const TextLine& l : lines) {
        EXPECT_GE(l.length, 1u);
        total += l.length;
    }
    EXPECT_EQ(total, std::string("Supercalifragilistic").size());
    EXPECT_EQ(Font_WrapText(*font, 14, "", 100).size(), 1u);
    EXPECT_EQ(Font_WrapText(*font, 14, "a\n\nb", 100).size(), 3u);
}

}  // namespace
