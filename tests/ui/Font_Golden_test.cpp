// A specimen of the toolkit's font, compared with a reviewed picture: every
// Latin-1 character and the symbols the program uses, at the sizes the
// screens give (from 9 px at 640 x 480 to 18 px at 1920 x 1080, and larger
// for headings), light on the dark theme, with labelled buttons above.
#include "DrawCanvas.h"
#include "ui/draw/Draw_Rect.h"
#include "ui/draw/Draw_RoundRect.h"

namespace {

constexpr Colour565 kGround = Draw_Rgb565(0x1C, 0x1F, 0x24);
constexpr Colour565 kText = Draw_Rgb565(0xE4, 0xE7, 0xEB);
constexpr Colour565 kDim = Draw_Rgb565(0x8A, 0x91, 0x9C);
constexpr Colour565 kButton = Draw_Rgb565(0x3C, 0x43, 0x4E);
constexpr Colour565 kButtonTop = Draw_Rgb565(0x5A, 0x62, 0x70);
constexpr Colour565 kBorder = Draw_Rgb565(0x44, 0x4A, 0x55);
constexpr int32_t kWidth = 800;

std::string Latin1() {
    std::string s;
    for (uint32_t c = 0x21; c <= 0xFF; ++c) {
        if (c >= 0x7F && c <= 0xA0) continue;
        if (c < 0x80) {
            s += char(c);
        } else {
            s += char(0xC0 | (c >> 6));
            s += char(0x80 | (c & 0x3F));
        }
    }
    return s;
}

const char* const kSymbols =
    "\xE2\x80\x98quoted\xE2\x80\x99 \xE2\x80\x9Cquoted\xE2\x80\x9D \xE2\x80\x9A\xE2\x80\x9E \xE2\x80\x93 "
    "\xE2\x80\x94 "
    "\xE2\x80\xA6 \xE2\x80\xA2 \xE2\x80\xB0 \xE2\x82\xAC \xE2\x84\xA2 \xE2\x86\x90 \xE2\x86\x91 \xE2\x86\x92 "
    "\xE2\x86\x93 \xE2\x86\x94 \xE2\x86\x95 \xE2\x89\x88 \xE2\x89\xA0 \xE2\x89\xA4 \xE2\x89\xA5 \xE2\x88\x9E "
    "\xCE\xB1 \xCE\xB2 \xCE\xB3 \xCE\xB4 \xCE\xBB \xCE\xBC \xCF\x80 \xCF\x83 \xCE\x94 \xCE\xA3 \xCE\xA9 "
    "\xE2\x9C\x93 \xE2\x9C\x97 \xE2\x96\xB2 \xE2\x96\xB6 \xE2\x96\xBC \xE2\x97\x80 \xE2\x98\x85 "
    "12\xE2\x80\xB2"
    "34\xE2\x80\xB3 \xE2\x88\x92"
    "5";

const char* const kSentence =
    "AutoDev stretched NGC 6946 to 12.5\xC2\xB0 \xC3\x97 3.2\xE2\x80\xB3/px \xE2\x80\x94 Keep, Cancel or "
    "Undo?";

struct Block {
    int32_t height;
    std::string text;
    Colour565 colour;
};

std::vector<Block> Specimen() {
    std::vector<Block> blocks;
    for (int32_t h : {9, 11, 12, 14, 18, 24, 32}) {
        blocks.push_back({h, std::to_string(h) + " px", kDim});
        blocks.push_back({h, Latin1(), kText});
        blocks.push_back({h, kSymbols, kText});
        blocks.push_back({h, kSentence, kText});
    }
    return blocks;
}

int32_t LineStep(int32_t h) {
    return h + (h + 3) / 4;
}

void DrawButton(const Surface& s, const Font& font, DrawRect r, const char* label, int32_t h) {
    Draw_FillRoundRectGradient(s, r, 7.0f, kButtonTop, kButton);
    Draw_StrokeRoundRect(s, r, 7.0f, 1.0f, kBorder);
    const TextMetrics m = Font_MeasureText(font, h, label);
    // Centred on the line box, ascent plus descent, so labels of any letters align.
    const int32_t baseline = r.y + (r.height - (m.ascent + m.descent)) / 2 + m.ascent;
    Font_DrawText(s, font, r.x + (r.width - m.width) / 2, baseline, h, label, kText);
}

TEST(FontGolden, SpecimenOnTheDarkTheme) {
    const Font* font = DrawTest_Font();
    ASSERT_NE(font, nullptr);
    const std::vector<Block> blocks = Specimen();
    int32_t height = 72;
    for (const Block& b : blocks)
        height += LineStep(b.height) * int32_t(Font_WrapText(*font, b.height, b.text, kWidth - 24).size());
    height += 8 * 7;

    DrawCanvas c(kWidth, height);
    Draw_FillRect(c.surface, {0, 0, kWidth, height}, kGround);
    // Buttons at the sizes of a 1920 x 1080 screen (36 px, text 18 px) and of 640 x 480 (19 px, text 9 px).
    DrawButton(c.surface, *font, {12, 12, 120, 36}, "Keep", 18);
    DrawButton(c.surface, *font, {144, 12, 120, 36}, "Cancel", 18);
    DrawButton(c.surface, *font, {276, 12, 120, 36}, "AutoDev", 18);
    DrawButton(c.surface, *font, {420, 20, 64, 19}, "Keep", 9);
    DrawButton(c.surface, *font, {492, 20, 64, 19}, "Cancel", 9);
    DrawButton(c.surface, *font, {564, 20, 64, 19}, "Wipe", 9);

    int32_t y = 64;
    int32_t lastHeight = 0;
    for (const Block& b : blocks) {
        if (b.height != lastHeight) y += 8;
        lastHeight = b.height;
        for (const TextLine& line : Font_WrapText(*font, b.height, b.text, kWidth - 24)) {
            const TextMetrics m = Font_MeasureText(*font, b.height, "");
            y += LineStep(b.height);
            Font_DrawText(c.surface, *font, 12, y - m.descent, b.height,
                          std::string_view(b.text).substr(line.begin, line.length), b.colour);
        }
    }
    // One 5-bit level either way: text may round differently on another compiler.
    DrawTest_CompareGolden(c, "font_specimen", 8);
}

}  // namespace
