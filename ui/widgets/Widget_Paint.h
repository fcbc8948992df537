// What every widget kind's drawing shares: the clipped framebuffer and the
// widget's rectangle, text placed on a line box so that baselines align across
// controls of the same height, and the focus ring.
#pragma once

#include "ui/Toolkit.h"
#include "ui/draw/Draw_Colour.h"
#include "ui/draw/Draw_Surface.h"

#include <string_view>

struct WidgetPaint {
    Surface* surface = nullptr;
    DrawRect rect;
    const Font* font = nullptr;
    int32_t textHeight = 0;
};

WidgetPaint Widget_BeginPaint(Toolkit* toolkit, const Widget* widget);

// The baseline that centres a line box (ascent plus descent) in `rect`.
int32_t Paint_Baseline(const WidgetPaint& paint, const DrawRect& rect);

// One line of text in `rect`, aligned by TextAlign (left, right or centre) and
// centred vertically; `inset` pixels are kept free at the sides. Text that does
// not fit is cut with an ellipsis, never clipped mid-glyph.
void Paint_Text(const WidgetPaint& paint, const DrawRect& rect, std::string_view text, uint32_t align,
                Colour565 colour, int32_t inset = 0);

// The longest prefix of `text` (whole characters) that fits `width` with an ellipsis.
std::string Paint_Elide(const WidgetPaint& paint, std::string_view text, int32_t width);

int32_t Paint_TextWidth(const WidgetPaint& paint, std::string_view text);

// The focus ring: an accent outline just inside the rectangle.
void Paint_FocusRing(const WidgetPaint& paint, const DrawRect& rect, float radius);

// A rectangle shrunk by `d` pixels on every side.
DrawRect Paint_Inset(const DrawRect& rect, int32_t d);
