// The painter's shapes as the toolkit's widgets will use them, compared with
// a reviewed picture pixel for pixel: glossy, pressed and disabled buttons,
// a field, a slider track with its knob, a curve and markers on the dark
// theme. And a specimen of the toolkit's font, compared with a reviewed
// picture: every Latin-1 character and the symbols the program uses, at the
// sizes the screens give (from 9 px at 640 x 480 to 18 px at 1920 x 1080, and
// larger for headings), light on the dark theme, with labelled buttons above.
#include "DrawCanvas.h"
#include "ui/draw/Draw_Rect.h"
#include "ui/draw/Draw_RoundRect.h"
#include "ui/draw/Draw_Shapes.h"

#include <cmath>

namespace {

constexpr Colour565 kGround = Draw_Rgb565(0x1C, 0x1F, 0x24);
constexpr Colour565 kPanel = Draw_Rgb565(0x26, 0x2A, 0x31);
constexpr Colour565 kBorder = Draw_Rgb565(0x44, 0x4A, 0x55);
constexpr Colour565 kGlossTop = Draw_Rgb565(0x5A, 0x62, 0x70);
constexpr Colour565 kGlossMiddle = Draw_Rgb565(0x3C, 0x43, 0x4E);
constexpr Colour565 kGlossBottom = Draw_Rgb565(0x33, 0x39, 0x43);
constexpr Colour565 kAccent = Draw_Rgb565(0xC8, 0x3C, 0x3C);  // night-vision red
constexpr Colour565 kLight = Draw_Rgb565(0xE4, 0xE7, 0xEB);

void GlossyButton(const Surface& s, DrawRect r, float radius) {
    Draw_FillRoundRect(s, r, radius, kGlossBottom);
    {
        Surface top = s;
        ClipScope upper(top, {r.x, r.y, r.width, r.height / 2});
        Draw_FillRoundRectGradient(top, r, radius, kGlossTop, kGlossMiddle);
    }
    Draw_StrokeRoundRect(s, r, radius, 1.0f, kBorder);
}

void DrawShapes(const Surface& s) {
    Draw_FillRect(s, {0, 0, s.width, s.height}, kGround);
    Draw_FillRoundRect(s, {8, 8, 464, 184}, 10.0f, kPanel);
    GlossyButton(s, {24, 24, 120, 36}, 7.0f);
    Draw_FillRoundRect(s, {160, 24, 120, 36}, 7.0f, kGlossBottom);  // pressed
    Draw_StrokeRoundRect(s, {160, 24, 120, 36}, 7.0f, 1.0f, kAccent);
    Draw_FillRoundRect(s, {296, 24, 120, 36}, 7.0f, kPanel);  // disabled
    Draw_StrokeRoundRect(s, {296, 24, 120, 36}, 7.0f, 1.0f, kBorder);
    // A field with its caret.
    Draw_FillRoundRect(s, {24, 76, 200, 28}, 4.0f, kGround);
    Draw_StrokeRoundRect(s, {24, 76, 200, 28}, 4.0f, 1.0f, kBorder);
    Draw_FillRect(s, {40, 82, 1, 16}, kLight);
    // A slider: track, filled part and knob.
    Draw_FillRoundRect(s, {240, 87, 200, 6}, 3.0f, kBorder);
    Draw_FillRoundRect(s, {240, 87, 130, 6}, 3.0f, kAccent);
    Draw_FillCircle(s, 370.0f, 90.0f, 10.0f, kLight);
    Draw_StrokeCircle(s, 370.0f, 90.0f, 10.0f, 1.5f, kBorder);
    // A histogram curve and star markers.
    float px = 24.0f, py = 176.0f;
    for (int i = 1; i <= 64; ++i) {
        const float x = 24.0f + float(i) * 3.0f;
        const float y = 176.0f - 52.0f * std::exp(-float((i - 20) * (i - 20)) / 90.0f);
        Draw_Line(s, px, py, x, y, 1.5f, kLight);
        px = x, py = y;
    }
    Draw_Line(s, 24.5f, 120.0f, 24.5f, 176.5f, 1.0f, kBorder);
    Draw_Line(s, 24.0f, 176.5f, 220.0f, 176.5f, 1.0f, kBorder);
    for (int i = 0; i < 5; ++i) {
        const float cx = 260.0f + float(i) * 40.0f, r = 2.0f + float(i) * 2.5f;
        Draw_StrokeCircle(s, cx, 150.0f, r, 1.0f, kAccent);
        Draw_FillCircle(s, cx, 150.0f, r * 0.4f, kLight);
    }
}

TEST(DrawGolden, WidgetShapesOnTheDarkTheme) {
    DrawCanvas c(480, 200);
    DrawShapes(c.surface);
    DrawTest_CompareGolden(c, "draw_shapes", 0);
}

constexpr Colour565 kDim = Draw_Rgb565(0x8A, 0x91, 0x9C);
constexpr int32_t kWidth = 800;

std::string Latin1() {
    std::string s;
    for (uint32_t c = 0x21; c <= 0xFF; ++c) {
        if (c >= 0x7F && c <= 0xA0) continue;
        s += c < 0x80 ? std::string(1, char(c)) : std::string{char(0xC0 | (c >> 6)), char(0x80 | (c & 0x3F))};
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

const int32_t kHeights[] = {9, 11, 12, 14, 18, 24, 32};

// The texts of one size, in their colours: the size itself, dimmed, then the characters and a sentence.
std::vector<std::pair<std::string, Colour565>> Texts(int32_t h) {
    return {{std::to_string(h) + " px", kDim}, {Latin1(), kLight}, {kSymbols, kLight}, {kSentence, kLight}};
}

int32_t LineStep(int32_t h) {
    return h + (h + 3) / 4;
}

void DrawButton(const Surface& s, const Font& font, DrawRect r, const char* label, int32_t h) {
    Draw_FillRoundRectGradient(s, r, 7.0f, kGlossTop, kGlossMiddle);
    Draw_StrokeRoundRect(s, r, 7.0f, 1.0f, kBorder);
    const TextMetrics m = Font_MeasureText(font, h, label);
    // Centred on the line box, ascent plus descent, so labels of any letters align.
    const int32_t baseline = r.y + (r.height - (m.ascent + m.descent)) / 2 + m.ascent;
    Font_DrawText(s, font, r.x + (r.width - m.width) / 2, baseline, h, label, kLight);
}

TEST(FontGolden, SpecimenOnTheDarkTheme) {
    const Font* font = DrawTest_Font();
    ASSERT_NE(font, nullptr);
    int32_t height = 72 + 8 * 7;
    for (int32_t h : kHeights)
        for (const auto& [text, colour] : Texts(h))
            height += LineStep(h) * int32_t(Font_WrapText(*font, h, text, kWidth - 24).size());

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
    for (int32_t h : kHeights) {
        y += 8;
        const TextMetrics m = Font_MeasureText(*font, h, "");
        for (const auto& [text, colour] : Texts(h))
            for (const TextLine& line : Font_WrapText(*font, h, text, kWidth - 24)) {
                y += LineStep(h);
                Font_DrawText(c.surface, *font, 12, y - m.descent, h,
                              std::string_view(text).substr(line.begin, line.length), colour);
            }
    }
    // One 5-bit level either way: text may round differently on another compiler.
    DrawTest_CompareGolden(c, "font_specimen", 8);
}

}  // namespace
