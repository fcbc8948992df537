// Setting text in the shipped font: UTF-8 and unknown characters, clipping
// and the glyph cache. (How the glyphs look, crisp stems and kerning included,
// where their ink lands in the line box and how text wraps are pinned by the
// specimen picture and the toolkit's golden pictures.)
#include "DrawCanvas.h"
#include "ui/font/Font.h"
#include "ui/font/Utf8.h"

#include <vector>

namespace {

constexpr Colour565 kWhite = 0xFFFF;

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

}  // namespace
