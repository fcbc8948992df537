// Drawing of a label.
#include "ui/widgets/Label.h"

#include "ui/Theme.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/WidgetKinds.h"
#include "ui/widgets/Widget_Paint.h"

#include <algorithm>

int Label_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event) {
    if (event->code != kEventDraw) return 0;
    const auto* record = Widget_Record<LabelRecord>(widget);
    WidgetPaint paint = Widget_BeginPaint(toolkit, widget);
    if (!record || !paint.font || record->text.empty()) return 1;
    const int32_t inset = std::max(2, paint.textHeight / 3);
    const int32_t room = std::max(paint.rect.width - 2 * inset, 1);
    std::vector<TextLine> lines = Font_WrapText(*paint.font, paint.textHeight, record->text, room);
    const int32_t step = paint.textHeight + (paint.textHeight + 3) / 4;
    const int32_t fit = std::max<int32_t>(1, paint.rect.height / step);
    const bool cut = static_cast<int32_t>(lines.size()) > fit;
    if (cut) lines.resize(static_cast<size_t>(fit));
    const int32_t block = static_cast<int32_t>(lines.size()) * step;
    int32_t top = paint.rect.y + (paint.rect.height - block) / 2;
    if (record->align & kAlignBottom) top = paint.rect.y + paint.rect.height - block;
    const uint32_t horizontal = record->align & (kAlignLeft | kAlignRight | kAlignCenter);
    for (size_t i = 0; i < lines.size(); ++i) {
        std::string text = record->text.substr(lines[i].begin, lines[i].length);
        if (cut && i + 1 == lines.size()) text += " \xE2\x80\xA6";
        const DrawRect row{paint.rect.x, top + static_cast<int32_t>(i) * step, paint.rect.width, step};
        Paint_Text(paint, row, text, horizontal ? horizontal : kAlignLeft, theme::kText, inset);
    }
    return 1;
}

void Label_SetText(Toolkit* toolkit, Widget* label, const std::string& text) {
    auto* record = Widget_Record<LabelRecord>(label);
    if (!record || record->text == text) return;
    record->text = text;
    Toolkit_Invalidate(toolkit, label);
}

const std::string* Label_Text(const Widget* label) {
    const auto* record = Widget_Record<LabelRecord>(label);
    return record ? &record->text : nullptr;
}
