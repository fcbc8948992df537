#include "ui/ValueLabel.h"

#include "ui/Toolkit.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/Toolkit_Events.h"
#include "ui/WidgetKinds.h"

std::string ValueLabel_TextFor(const Widget* setter, uint32_t position) {
    const auto* record = Widget_Record<LevelSetterRecord>(setter);
    if (!record) return {};
    if (record->format) return record->format(record->formatUser, *record, position);
    return std::to_string(position);
}

void ValueLabel_Update(Toolkit* toolkit, Widget* setter, uint32_t position) {
    auto* record = Widget_Record<LevelSetterRecord>(setter);
    if (!toolkit || !record) return;
    if (auto* label = Widget_Record<LabelRecord>(record->valueLabel)) {
        label->text = ValueLabel_TextFor(setter, position);
        Toolkit_PostEvent(toolkit, record->valueLabel, kEventDraw);
    }
    Toolkit_ProcessPendingDraws(toolkit);
}
