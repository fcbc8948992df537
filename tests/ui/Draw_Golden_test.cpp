// The painter's shapes as the toolkit's widgets will use them, compared with
// a reviewed picture pixel for pixel: glossy, pressed and disabled buttons,
// a field, a slider track with its knob, a curve and markers on the dark
// theme.
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
constexpr Colour565 kKnob = Draw_Rgb565(0xE4, 0xE7, 0xEB);

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
    Draw_FillRect(s, {40, 82, 1, 16}, kKnob);
    // A slider: track, filled part and knob.
    Draw_FillRoundRect(s, {240, 87, 200, 6}, 3.0f, kBorder);
    Draw_FillRoundRect(s, {240, 87, 130, 6}, 3.0f, kAccent);
    Draw_FillCircle(s, 370.0f, 90.0f, 10.0f, kKnob);
    Draw_StrokeCircle(s, 370.0f, 90.0f, 10.0f, 1.5f, kBorder);
    // A histogram curve and star markers.
    float px = 24.0f, py = 176.0f;
    for (int i = 1; i <= 64; ++i) {
        const float x = 24.0f + float(i) * 3.0f;
        const float y = 176.0f - 52.0f * std::exp(-float((i - 20) * (i - 20)) / 90.0f);
        Draw_Line(s, px, py, x, y, 1.5f, kKnob);
        px = x, py = y;
    }
    Draw_Line(s, 24.5f, 120.0f, 24.5f, 176.5f, 1.0f, kBorder);
    Draw_Line(s, 24.0f, 176.5f, 220.0f, 176.5f, 1.0f, kBorder);
    for (int i = 0; i < 5; ++i) {
        const float cx = 260.0f + float(i) * 40.0f, r = 2.0f + float(i) * 2.5f;
        Draw_StrokeCircle(s, cx, 150.0f, r, 1.0f, kAccent);
        Draw_FillCircle(s, cx, 150.0f, r * 0.4f, kKnob);
    }
}

TEST(DrawGolden, WidgetShapesOnTheDarkTheme) {
    DrawCanvas c(480, 200);
    DrawShapes(c.surface);
    DrawTest_CompareGolden(c, "draw_shapes", 0);
}

}  // namespace
