// Drawing and pointer behaviour of selectors.
#include "ui/widgets/Selector.h"

#include "ui/Theme.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/draw/Draw_RoundRect.h"
#include "ui/draw/Draw_Shapes.h"
#include "ui/widgets/Widget_Paint.h"

#include <algorithm>

namespace {

// A chevron pointing left (-1) or right (+1), centred at (cx, cy).
void Chevron(const Surface& s, float cx, float cy, float size, int direction, Colour565 colour) {
    const float dx = size * 0.5f * static_cast<float>(direction);
    Draw_Line(s, cx - dx, cy - size, cx + dx, cy, 1.6f, colour);
    Draw_Line(s, cx + dx, cy, cx - dx, cy + size, 1.6f, colour);
}

void Draw(Toolkit* toolkit, Widget* widget, SelectorRecord* record) {
    WidgetPaint paint = Widget_BeginPaint(toolkit, widget);
    Surface& s = *paint.surface;
    const int32_t gap = std::max(1, Theme_Gap(toolkit) / 2);
    const DrawRect body = Paint_Inset(paint.rect, gap);
    if (Draw_IsEmpty(body)) return;
    const float radius = static_cast<float>(Theme_Radius(body.height));
    const bool focused = toolkit->input.focus == widget;
    Draw_FillRoundRectGradient(s, body, radius, theme::kControlTop, theme::kControl);
    Draw_StrokeRoundRect(s, body, radius, 1.0f, focused ? theme::kAccent : theme::kBorder);
    const int32_t arrow = std::min(body.height, paint.textHeight * 2);
    const float size = static_cast<float>(paint.textHeight) * 0.32f;
    const float cy = static_cast<float>(body.y) + static_cast<float>(body.height) * 0.5f;
    const Colour565 ink = record->items.size() > 1 ? theme::kTextDim : theme::kTextDisabled;
    Chevron(s, static_cast<float>(body.x) + static_cast<float>(arrow) * 0.5f, cy, size, -1, ink);
    Chevron(s, static_cast<float>(body.x + body.width) - static_cast<float>(arrow) * 0.5f, cy, size, 1, ink);
    if (const std::string* item = Selector_Item(widget))
        Paint_Text(paint, {body.x + arrow, body.y, body.width - 2 * arrow, body.height}, *item, kAlignCenter,
                   theme::kText);
}

void Step(Toolkit* toolkit, Widget* widget, SelectorRecord* record, int direction) {
    const uint32_t n = static_cast<uint32_t>(record->items.size());
    if (n == 0) return;
    Selector_Select(toolkit, widget, (record->selected + (direction < 0 ? n - 1 : 1)) % n);
}

}  // namespace

int Selector_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event) {
    auto* record = Widget_Record<SelectorRecord>(widget);
    if (!record) return 0;
    switch (event->code) {
        case kEventDraw:
            Draw(toolkit, widget, record);
            return 1;
        case kEventPress: {
            const PixelRect r = Widget_PixelRect(toolkit, widget);
            const bool back = static_cast<int32_t>(event->payload[0]) < r.x + r.width / 3;
            Step(toolkit, widget, record, back ? -1 : 1);
            return 1;
        }
        case kEventDrag:
        case kEventRelease:
            return 1;
        case kEventCharacter:
            if (event->payload[0] != ' ' && event->payload[0] != kKeyEnter) return 0;
            Step(toolkit, widget, record, 1);
            return 1;
        default:
            return 0;
    }
}

void Selector_Select(Toolkit* toolkit, Widget* selector, uint32_t index) {
    auto* record = Widget_Record<SelectorRecord>(selector);
    if (!record || record->items.empty()) return;
    index = std::min<uint32_t>(index, static_cast<uint32_t>(record->items.size()) - 1);
    if (index == record->selected) return;
    record->selected = index;
    Toolkit_Invalidate(toolkit, selector);
    if (record->onChange) record->onChange(toolkit, selector, record->user);
}

const std::string* Selector_Item(const Widget* selector) {
    const auto* record = Widget_Record<SelectorRecord>(selector);
    if (!record || record->selected >= record->items.size()) return nullptr;
    return &record->items[record->selected];
}

Widget* Selector_CaptionLabel(Widget* form, const Widget* selector) {
    if (!selector || selector->id == 0) return nullptr;
    return Widget_FindById(form, Selector_CaptionId(selector->id));
}
