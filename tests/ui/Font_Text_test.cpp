// Setting text in the shipped font: UTF-8 and unknown characters, and
// wrapping to a width. (How the glyphs look, crisp stems and kerning included,
// and where their ink lands in the line box are pinned by the specimen picture
// and the toolkit's golden pictures.)
#include "DrawCanvas.h"
#include "ui/font/Font.h"
#include "ui/font/Utf8.h"

#include <algorithm>

namespace {

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
