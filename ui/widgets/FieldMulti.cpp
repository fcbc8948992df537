// Drawing and editing of multi-line fields.
#include "ui/widgets/FieldMulti.h"

#include "ui/Theme.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/draw/Draw_Rect.h"
#include "ui/draw/Draw_RoundRect.h"
#include "ui/widgets/Field.h"
#include "ui/widgets/Widget_Paint.h"

#include <algorithm>

namespace {

void Draw(Toolkit* toolkit, Widget* widget, FieldMultiRecord* record) {
    WidgetPaint paint = Widget_BeginPaint(toolkit, widget);
    Surface& s = *paint.surface;
    const int32_t gap = std::max(1, Theme_Gap(toolkit) / 2);
    const DrawRect body = Paint_Inset(paint.rect, gap);
    if (Draw_IsEmpty(body)) return;
    const float radius = static_cast<float>(Theme_Radius(std::min(body.height, paint.textHeight * 3)));
    const bool focused = toolkit->input.focus == widget;
    Draw_FillRoundRect(s, body, radius, theme::kWell);
    Draw_StrokeRoundRect(s, body, radius, 1.0f, focused ? theme::kAccent : theme::kBorder);
    if (!paint.font) return;
    const int32_t pad = std::max(3, paint.textHeight / 2);
    const DrawRect inner{body.x + pad, body.y + pad / 2, body.width - 2 * pad, body.height - pad};
    if (Draw_IsEmpty(inner)) return;
    const std::string& text = record->text;
    std::vector<TextLine> lines = Font_WrapText(*paint.font, paint.textHeight, text, inner.width);
    const bool endsInBreak = !text.empty() && text.back() == '\n';
    const int32_t step = paint.textHeight + (paint.textHeight + 3) / 4;
    const int32_t fit = std::max(1, inner.height / step);
    const int32_t count = static_cast<int32_t>(lines.size()) + (endsInBreak ? 1 : 0);
    const int32_t first = std::max(0, count - fit);
    const TextMetrics m = Font_MeasureText(*paint.font, paint.textHeight, "");
    ClipScope clip(s, inner);
    int32_t row = 0;
    for (int32_t i = first; i < static_cast<int32_t>(lines.size()); ++i, ++row) {
        const TextLine& line = lines[static_cast<size_t>(i)];
        const int32_t baseline = inner.y + row * step + (step - (m.ascent + m.descent)) / 2 + m.ascent;
        Font_DrawText(s, *paint.font, inner.x, baseline, paint.textHeight,
                      std::string_view(text).substr(line.begin, line.length), theme::kText);
    }
    if (focused) {
        int32_t caretRow = count - 1 - first, caretX = inner.x;
        if (!endsInBreak && !lines.empty()) caretX += lines.back().width;
        if (count == 0) caretRow = 0;
        const int32_t top = inner.y + caretRow * step + (step - (m.ascent + m.descent)) / 2;
        Draw_FillRect(s, {caretX, top, 1, m.ascent + m.descent}, theme::kAccent);
    }
}

}  // namespace

int FieldMulti_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event) {
    auto* record = Widget_Record<FieldMultiRecord>(widget);
    if (!record) return 0;
    switch (event->code) {
        case kEventDraw:
            Draw(toolkit, widget, record);
            return 1;
        case kEventPress:
            record->caret = std::string::npos;
            Toolkit_Invalidate(toolkit, widget);
            return 1;
        case kEventDrag:
        case kEventRelease:
            return 1;
        case kEventCharacter: {
            // The caret stays at the end: lines are edited as they are typed.
            size_t caret = record->text.size();
            if (!Field_EditKey(&record->text, &caret, event->payload[0], true)) return 0;
            record->caret = std::string::npos;
            Toolkit_Invalidate(toolkit, widget);
            if (record->onChange) record->onChange(toolkit, widget, record->user);
            return 1;
        }
        default:
            return 0;
    }
}
