// Drawing and pointer behaviour of buttons.
#include "ui/widgets/Button.h"

#include "ui/Theme.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/draw/Draw_Rect.h"
#include "ui/draw/Draw_RoundRect.h"
#include "ui/widgets/Bitmap.h"
#include "ui/widgets/Widget_Paint.h"

#include <algorithm>

namespace {

// The body rectangle inside the cell: a gap at the sides that stand alone.
DrawRect BodyRect(const Toolkit* toolkit, const DrawRect& cell, uint32_t rounded) {
    const int32_t gap = std::max(1, Theme_Gap(toolkit) / 2);
    DrawRect r = cell;
    r.y += gap;
    r.height = std::max(r.height - 2 * gap, 0);
    const bool left =
        (rounded & (kRoundedTopLeft | kRoundedBottomLeft)) == (kRoundedTopLeft | kRoundedBottomLeft);
    const bool right =
        (rounded & (kRoundedTopRight | kRoundedBottomRight)) == (kRoundedTopRight | kRoundedBottomRight);
    if (left) r.x += gap, r.width -= gap;
    if (right) r.width -= gap;
    r.width = std::max(r.width, 0);
    return r;
}

// Square corners where the mask leaves them: each one redrawn square inside its own clip.
template <class Fill>
void ShapeWithCorners(Surface& surface, const DrawRect& r, float radius, uint32_t rounded, Fill fill) {
    fill(radius);
    const int32_t c = static_cast<int32_t>(radius) + 1;
    const struct {
        uint32_t bit;
        DrawRect corner;
    } corners[4] = {{kRoundedTopLeft, {r.x, r.y, c, c}},
                    {kRoundedTopRight, {r.x + r.width - c, r.y, c, c}},
                    {kRoundedBottomLeft, {r.x, r.y + r.height - c, c, c}},
                    {kRoundedBottomRight, {r.x + r.width - c, r.y + r.height - c, c, c}}};
    for (const auto& k : corners) {
        if (rounded & k.bit) continue;
        ClipScope scope(surface, k.corner);
        fill(0.0f);
    }
}

void Press(Toolkit* toolkit, Widget* widget, ButtonRecord* record) {
    record->pressed = false;
    Toolkit_Invalidate(toolkit, widget);
    // Last: the callback may close the form the button is on.
    if (record->onPress) record->onPress(toolkit, widget, record->user);
}

bool Inside(const Toolkit* toolkit, const Widget* widget, const WidgetEvent* event) {
    const PixelRect r = Widget_PixelRect(toolkit, widget);
    const int32_t x = static_cast<int32_t>(event->payload[0]), y = static_cast<int32_t>(event->payload[1]);
    return x >= r.x && y >= r.y && x < r.x + r.width && y < r.y + r.height;
}

void Draw(Toolkit* toolkit, Widget* widget, ButtonRecord* record) {
    WidgetPaint paint = Widget_BeginPaint(toolkit, widget);
    Surface& s = *paint.surface;
    const DrawRect body = BodyRect(toolkit, paint.rect, record->rounded);
    if (Draw_IsEmpty(body)) return;
    const float radius = static_cast<float>(Theme_Radius(body.height));
    const bool focused = toolkit->input.focus == widget;
    if (record->disabled) {
        ShapeWithCorners(s, body, radius, record->rounded,
                         [&](float rr) { Draw_FillRoundRect(s, body, rr, theme::kControlFlat); });
    } else if (record->pressed) {
        ShapeWithCorners(s, body, radius, record->rounded,
                         [&](float rr) { Draw_FillRoundRect(s, body, rr, theme::kControlPressed); });
    } else if (!record->flat) {
        ShapeWithCorners(s, body, radius, record->rounded, [&](float rr) {
            if (record->noGloss)
                Draw_FillRoundRect(s, body, rr, theme::kControl);
            else
                Draw_FillRoundRectGradient(s, body, rr, theme::kControlTop, theme::kControl);
        });
    }
    if (!record->flat || record->pressed) {
        ShapeWithCorners(s, body, radius, record->rounded,
                         [&](float rr) { Draw_StrokeRoundRect(s, body, rr, 1.0f, theme::kBorder); });
        // The gloss catches light along the top edge.
        if (!record->noGloss && !record->pressed && !record->disabled) {
            const int32_t in = static_cast<int32_t>(radius);
            Draw_BlendRect(s, {body.x + in, body.y + 1, body.width - 2 * in, 1}, theme::kText, 40);
        }
    }
    if (focused)
        ShapeWithCorners(s, body, radius, record->rounded,
                         [&](float rr) { Paint_FocusRing(paint, body, rr); });

    const Colour565 ink = record->disabled ? theme::kTextDisabled : theme::kText;
    const int32_t shift = record->pressed ? 1 : 0;  // pressed content sinks a pixel
    DrawRect content = Paint_Inset(body, 2);
    content.y += shift;
    if (!record->resource.empty()) {
        auto* cache = &record->iconCache;
        const int32_t side = std::min(content.height, content.width) * 3 / 4;
        DrawRect icon{content.x + (content.width - side) / 2, content.y + (content.height - side) / 2, side,
                      side};
        if (!record->text.empty()) {
            const int32_t total = side + paint.textHeight / 2 + Paint_TextWidth(paint, record->text);
            icon.x = content.x + std::max((content.width - total) / 2, paint.textHeight / 2);
            content.x = icon.x + side + paint.textHeight / 2;
            content.width = body.x + body.width - content.x - 2;
        }
        Bitmap_DrawResource(toolkit, record->resource, &cache->bytes, &cache->loaded, icon, kFillAutoFit);
        if (!record->text.empty()) Paint_Text(paint, content, record->text, kAlignLeft, ink);
        return;
    }
    Paint_Text(paint, content, record->text, record->textAlign, ink, paint.textHeight / 2);
}

}  // namespace

int Button_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event) {
    auto* record = Widget_Record<ButtonRecord>(widget);
    if (!record) return 0;
    switch (event->code) {
        case kEventDraw:
            Draw(toolkit, widget, record);
            return 1;
        case kEventPress:
            if (record->disabled) return 1;
            record->pressed = true;
            Toolkit_Invalidate(toolkit, widget);
            return 1;
        case kEventDrag: {
            if (record->disabled) return 1;
            const bool inside = Inside(toolkit, widget, event);
            if (inside != record->pressed) {
                record->pressed = inside;
                Toolkit_Invalidate(toolkit, widget);
            }
            return 1;
        }
        case kEventRelease:
            if (record->disabled || !record->pressed) return 1;
            if (!Inside(toolkit, widget, event)) {
                record->pressed = false;
                Toolkit_Invalidate(toolkit, widget);
                return 1;
            }
            Press(toolkit, widget, record);
            return 1;
        case kEventCharacter:
            if (record->disabled || (event->payload[0] != kKeyEnter && event->payload[0] != ' ')) return 0;
            Press(toolkit, widget, record);
            return 1;
        default:
            return 0;
    }
}

void Button_SetText(Toolkit* toolkit, Widget* button, const std::string& text) {
    auto* record = Widget_Record<ButtonRecord>(button);
    if (!record || record->text == text) return;
    record->text = text;
    Toolkit_Invalidate(toolkit, button);
}

void Button_SetEnabled(Toolkit* toolkit, Widget* button, bool enabled) {
    auto* record = Widget_Record<ButtonRecord>(button);
    if (!record || record->disabled == !enabled) return;
    record->disabled = !enabled;
    record->pressed = false;
    if (!enabled && toolkit->input.focus == button) toolkit->input.focus = nullptr;
    Toolkit_Invalidate(toolkit, button);
}

void Button_SetCallback(Widget* button, WidgetCallback onPress, void* user) {
    if (auto* record = Widget_Record<ButtonRecord>(button)) {
        record->onPress = onPress;
        record->user = user;
    }
}
