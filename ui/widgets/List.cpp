// Drawing and pointer behaviour of lists.
#include "ui/widgets/List.h"

#include "ui/Theme.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/draw/Draw_Rect.h"
#include "ui/draw/Draw_RoundRect.h"
#include "ui/widgets/Widget_Paint.h"

#include <algorithm>

namespace {

DrawRect Body(const Toolkit* toolkit, const DrawRect& rect) {
    return Paint_Inset(rect, std::max(1, Theme_Gap(toolkit) / 2));
}

int32_t VisibleRows(const Toolkit* toolkit, const DrawRect& body) {
    return std::max(1, (body.height - 4) / List_RowHeight(toolkit));
}

void KeepInView(const Toolkit* toolkit, const Widget* widget, ListRecord* record) {
    const PixelRect r = Widget_PixelRect(toolkit, widget);
    const int32_t rows = VisibleRows(toolkit, Body(toolkit, {r.x, r.y, r.width, r.height}));
    if (record->selected >= 0) {
        if (record->selected < record->firstVisible) record->firstVisible = record->selected;
        if (record->selected >= record->firstVisible + rows)
            record->firstVisible = record->selected - rows + 1;
    }
    record->firstVisible =
        std::clamp(record->firstVisible, 0, std::max(0, static_cast<int32_t>(record->items.size()) - rows));
}

void Draw(Toolkit* toolkit, Widget* widget, ListRecord* record) {
    WidgetPaint paint = Widget_BeginPaint(toolkit, widget);
    Surface& s = *paint.surface;
    const DrawRect body = Body(toolkit, paint.rect);
    if (Draw_IsEmpty(body)) return;
    const float radius = static_cast<float>(Theme_Radius(std::min(body.height, paint.textHeight * 3)));
    const bool focused = toolkit->input.focus == widget;
    Draw_FillRoundRect(s, body, radius, theme::kWell);
    const int32_t rowHeight = List_RowHeight(toolkit);
    const DrawRect inner = Paint_Inset(body, 2);
    {
        ClipScope clip(s, inner);
        const int32_t rows = VisibleRows(toolkit, body);
        for (int32_t i = 0; i < rows; ++i) {
            const int32_t index = record->firstVisible + i;
            if (index >= static_cast<int32_t>(record->items.size())) break;
            const DrawRect row{inner.x, inner.y + i * rowHeight, inner.width, rowHeight};
            const bool chosen = index == record->selected;
            if (chosen) {
                Draw_FillRect(s, row, theme::kSelection);
                Draw_FillRect(s, {row.x, row.y, 2, row.height}, theme::kAccent);
            } else if (index % 2 == 1) {
                Draw_BlendRect(s, row, theme::kText, 6);
            }
            Paint_Text(paint, row, record->items[static_cast<size_t>(index)], kAlignLeft,
                       chosen ? theme::kText : theme::kTextDim, paint.textHeight / 2 + 2);
        }
    }
    Draw_StrokeRoundRect(s, body, radius, 1.0f, focused ? theme::kAccent : theme::kBorder);
}

}  // namespace

int32_t List_RowHeight(const Toolkit* toolkit) {
    const int32_t text = std::max(Toolkit_TextHeight(toolkit), 6);
    return text + (text * 3 + 3) / 4;
}

PixelRect List_RowRect(const Toolkit* toolkit, const Widget* list, int32_t index) {
    const auto* record = Widget_Record<ListRecord>(list);
    if (!record) return {};
    const PixelRect r = Widget_PixelRect(toolkit, list);
    const DrawRect body = Body(toolkit, {r.x, r.y, r.width, r.height});
    const int32_t shown = index - record->firstVisible;
    if (shown < 0 || shown >= VisibleRows(toolkit, body)) return {};
    const DrawRect inner = Paint_Inset(body, 2);
    const int32_t rowHeight = List_RowHeight(toolkit);
    return {inner.x, inner.y + shown * rowHeight, inner.width, rowHeight};
}

int List_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event) {
    auto* record = Widget_Record<ListRecord>(widget);
    if (!record) return 0;
    switch (event->code) {
        case kEventDraw:
            Draw(toolkit, widget, record);
            return 1;
        case kEventPress: {
            const PixelRect r = Widget_PixelRect(toolkit, widget);
            const DrawRect inner = Paint_Inset(Body(toolkit, {r.x, r.y, r.width, r.height}), 2);
            const int32_t y = static_cast<int32_t>(event->payload[1]) - inner.y;
            if (y < 0) return 1;
            const int32_t index = record->firstVisible + y / List_RowHeight(toolkit);
            if (index < static_cast<int32_t>(record->items.size())) List_Select(toolkit, widget, index);
            return 1;
        }
        case kEventDrag:
        case kEventRelease:
            return 1;
        default:
            return 0;
    }
}

void List_SetItems(Toolkit* toolkit, Widget* list, std::vector<std::string> items) {
    auto* record = Widget_Record<ListRecord>(list);
    if (!record) return;
    record->items = std::move(items);
    record->selected = -1;
    record->firstVisible = 0;
    Toolkit_Invalidate(toolkit, list);
}

void List_Select(Toolkit* toolkit, Widget* list, int32_t index) {
    auto* record = Widget_Record<ListRecord>(list);
    if (!record || index < -1 || index >= static_cast<int32_t>(record->items.size())) return;
    const bool changed = record->selected != index;
    record->selected = index;
    KeepInView(toolkit, list, record);
    Toolkit_Invalidate(toolkit, list);
    if (changed && record->onSelect) record->onSelect(toolkit, list, record->user);
}
