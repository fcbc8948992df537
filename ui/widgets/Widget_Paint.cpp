// Shared drawing of the widget kinds.
#include "ui/widgets/Widget_Paint.h"

#include "ui/Theme.h"
#include "ui/WidgetKinds.h"
#include "ui/draw/Draw_RoundRect.h"
#include "ui/font/Utf8.h"

#include <algorithm>
#include <string>

namespace {
constexpr const char* kEllipsis = "\xE2\x80\xA6";
}

WidgetPaint Widget_BeginPaint(Toolkit* toolkit, const Widget* widget) {
    WidgetPaint paint;
    paint.surface = &toolkit->paint;
    const PixelRect r = Widget_PixelRect(toolkit, widget);
    paint.rect = {r.x, r.y, r.width, r.height};
    paint.font = toolkit->font.get();
    paint.textHeight = std::max(Toolkit_TextHeight(toolkit), 6);
    return paint;
}

int32_t Paint_Baseline(const WidgetPaint& paint, const DrawRect& rect) {
    if (!paint.font) return rect.y + rect.height / 2;
    const TextMetrics m = Font_MeasureText(*paint.font, paint.textHeight, "");
    return rect.y + (rect.height - (m.ascent + m.descent)) / 2 + m.ascent;
}

int32_t Paint_TextWidth(const WidgetPaint& paint, std::string_view text) {
    return paint.font ? Font_MeasureText(*paint.font, paint.textHeight, text).width : 0;
}

std::string Paint_Elide(const WidgetPaint& paint, std::string_view text, int32_t width) {
    if (!paint.font || Paint_TextWidth(paint, text) <= width) return std::string(text);
    const int32_t room = width - Paint_TextWidth(paint, kEllipsis);
    // Cut at character starts only: UTF-8 continuation bytes are 10xxxxxx.
    size_t cut = text.size();
    while (cut > 0) {
        --cut;
        while (cut > 0 && (static_cast<uint8_t>(text[cut]) & 0xC0) == 0x80) --cut;
        if (Paint_TextWidth(paint, text.substr(0, cut)) <= room) break;
    }
    return std::string(text.substr(0, cut)) + kEllipsis;
}

void Paint_Text(const WidgetPaint& paint, const DrawRect& rect, std::string_view text, uint32_t align,
                Colour565 colour, int32_t inset) {
    if (!paint.font || text.empty()) return;
    const DrawRect inner = Paint_Inset(rect, 0);
    const int32_t room = inner.width - 2 * inset;
    const std::string shown = Paint_Elide(paint, text, room);
    const int32_t width = Paint_TextWidth(paint, shown);
    int32_t x = inner.x + inset;
    if (align & kAlignRight)
        x = inner.x + inner.width - inset - width;
    else if (align & kAlignCenter)
        x = inner.x + (inner.width - width) / 2;
    Font_DrawText(*paint.surface, *paint.font, x, Paint_Baseline(paint, rect), paint.textHeight, shown,
                  colour);
}

void Paint_FocusRing(const WidgetPaint& paint, const DrawRect& rect, float radius) {
    Draw_StrokeRoundRect(*paint.surface, rect, radius, 1.5f, theme::kAccent);
}

DrawRect Paint_Inset(const DrawRect& rect, int32_t d) {
    return {rect.x + d, rect.y + d, std::max(rect.width - 2 * d, 0), std::max(rect.height - 2 * d, 0)};
}
