// Drawing and dragging of level setters.
#include "ui/widgets/LevelSetter.h"
#include "ui/font/Font.h"

#include "ui/Theme.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/Toolkit_Events.h"
#include "ui/ValueLabel.h"
#include "ui/draw/Draw_RoundRect.h"
#include "ui/draw/Draw_Shapes.h"
#include "ui/widgets/Label.h"
#include "ui/widgets/Widget_Paint.h"

#include <algorithm>

namespace {

void Draw(Toolkit* toolkit, Widget* widget, LevelSetterRecord* record) {
    WidgetPaint paint = Widget_BeginPaint(toolkit, widget);
    Surface& s = *paint.surface;
    const LevelSetterTrack t = LevelSetter_Track(toolkit, widget);
    if (t.right <= t.left) return;
    const int32_t thickness = std::max(3, t.knobRadius / 2);
    const DrawRect track{t.left - thickness / 2, t.centreY - thickness / 2, t.right - t.left + thickness,
                         thickness};
    const float half = static_cast<float>(thickness) * 0.5f;
    Draw_FillRoundRect(s, track, half, theme::kWell);
    Draw_StrokeRoundRect(s, track, half, 1.0f, theme::kBorder);
    const int64_t span = t.right - t.left;
    const int32_t knobX =
        t.left +
        static_cast<int32_t>(
            record->maximum ? (int64_t{record->value} * span + record->maximum / 2) / record->maximum : 0);
    const bool focused = toolkit->input.focus == widget;
    if (knobX > track.x && !record->disabled)
        Draw_FillRoundRect(s, {track.x, track.y, knobX - track.x + thickness / 2, track.height}, half,
                           record->dragging ? theme::kAccent : theme::kAccentDim);
    const float cx = static_cast<float>(knobX) + 0.5f, cy = static_cast<float>(t.centreY) + 0.5f;
    const float r = static_cast<float>(t.knobRadius);
    Draw_FillCircle(s, cx, cy + 1.0f, r, theme::kWell);  // a soft shadow under the knob
    Draw_FillCircle(s, cx, cy, r,
                    record->disabled   ? theme::kWell
                    : record->dragging ? theme::kText
                                       : theme::kControlTop);
    Draw_StrokeCircle(s, cx, cy, r - 0.5f, 1.0f,
                      focused || record->dragging ? theme::kAccent : theme::kBorderStrong);
    (void)paint;
}

// Caption and value share the upper half: the caption takes what its text
// needs (at most half, at least a fifth), the value the rest, so that the
// longer value texts ("(scale/noise reduction 50.00%)/(400.00%)/(+2.00 bits)")
// stay on one line beside a short caption.
void PlaceLabels(const Toolkit* toolkit, Widget* setter, LevelSetterRecord* record) {
    const uint32_t half = kUnitsWhole / 2;
    uint32_t split = half;
    const std::string* caption = record->captionLabel ? Label_Text(record->captionLabel) : nullptr;
    const PixelRect r = Widget_PixelRect(toolkit, setter);
    if (toolkit->font && caption && !caption->empty() && r.width > 0) {
        const int32_t th = Toolkit_TextHeight(toolkit);
        const int64_t needed = Font_MeasureText(*toolkit->font, th, *caption).width + 2 * th;
        split = uint32_t(std::clamp<int64_t>(needed * kUnitsWhole / r.width, kUnitsWhole / 5, half));
    }
    for (Widget* label : {record->captionLabel, record->valueLabel}) {
        if (!label || label->parent != setter) continue;
        label->x = label == record->captionLabel ? 0 : split;
        label->width = label == record->captionLabel ? split : kUnitsWhole - split;
        label->y = 0;
        label->height = half;
    }
}

void Move(Toolkit* toolkit, Widget* widget, LevelSetterRecord* record, int32_t x) {
    const uint32_t value = LevelSetter_PositionAt(toolkit, widget, x);
    if (value == record->value) return;
    LevelSetter_SetValue(toolkit, widget, value, true);
}

}  // namespace

LevelSetterTrack LevelSetter_Track(const Toolkit* toolkit, const Widget* setter) {
    const PixelRect r = Widget_PixelRect(toolkit, setter);
    LevelSetterTrack t;
    const int32_t lower = r.height / 2;  // the labels hold the upper half
    t.knobRadius = std::max(3, std::min(lower * 2 / 5, toolkit->minimalObjectSizeY / 4));
    const int32_t inset = std::max(t.knobRadius + 2, Toolkit_TextHeight(toolkit) / 3 + t.knobRadius);
    t.left = r.x + inset;
    t.right = r.x + r.width - inset - 1;
    t.centreY = r.y + lower + (r.height - lower) / 2;
    return t;
}

uint32_t LevelSetter_PositionAt(const Toolkit* toolkit, const Widget* setter, int32_t x) {
    const auto* record = Widget_Record<LevelSetterRecord>(setter);
    if (!record || record->maximum == 0) return 0;
    const LevelSetterTrack t = LevelSetter_Track(toolkit, setter);
    const int64_t span = std::max(1, t.right - t.left);
    const int64_t offset = std::clamp<int64_t>(x - t.left, 0, span);
    return static_cast<uint32_t>((offset * record->maximum + span / 2) / span);
}

int LevelSetter_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event) {
    auto* record = Widget_Record<LevelSetterRecord>(widget);
    if (!record) return 0;
    if (record->disabled && event->code != kEventDraw) return event->code != kEventCharacter;
    switch (event->code) {
        case kEventDraw:
            Draw(toolkit, widget, record);
            return 1;
        case kEventPress:
            record->dragging = true;
            Move(toolkit, widget, record, static_cast<int32_t>(event->payload[0]));
            Toolkit_Invalidate(toolkit, widget);
            return 1;
        case kEventDrag:
            if (record->dragging) Move(toolkit, widget, record, static_cast<int32_t>(event->payload[0]));
            return 1;
        case kEventRelease:
            if (record->dragging) Move(toolkit, widget, record, static_cast<int32_t>(event->payload[0]));
            record->dragging = false;
            Toolkit_Invalidate(toolkit, widget);
            return 1;
        case kEventCharacter:
            // '+' and '-' step by one for exact settings.
            if (event->payload[0] == '+' && record->value < record->maximum) {
                LevelSetter_SetValue(toolkit, widget, record->value + 1, true);
                return 1;
            }
            if (event->payload[0] == '-' && record->value > 0) {
                LevelSetter_SetValue(toolkit, widget, record->value - 1, true);
                return 1;
            }
            return 0;
        default:
            return 0;
    }
}

void LevelSetter_Setup(Toolkit* toolkit, Widget* setter, uint32_t maximum, uint32_t value,
                       LevelSetterFormatFn format, void* formatUser) {
    auto* record = Widget_Record<LevelSetterRecord>(setter);
    if (!record) return;
    record->maximum = maximum;
    record->format = format;
    record->formatUser = formatUser;
    PlaceLabels(toolkit, setter, record);
    record->value = std::min(value, maximum);
    ValueLabel_Update(toolkit, setter, record->value);
    Toolkit_Invalidate(toolkit, setter);
}

void LevelSetter_SetValue(Toolkit* toolkit, Widget* setter, uint32_t value, bool notify) {
    auto* record = Widget_Record<LevelSetterRecord>(setter);
    if (!record) return;
    record->value = std::min(value, record->maximum);
    // The track is redrawn with the value label, at once, while the pointer is still moving.
    Toolkit_PostEvent(toolkit, setter, kEventDraw);
    ValueLabel_Update(toolkit, setter, record->value);
    if (notify && record->onChange) record->onChange(toolkit, setter, record->user);
}

uint32_t LevelSetter_Value(const Widget* setter) {
    const auto* record = Widget_Record<LevelSetterRecord>(setter);
    return record ? record->value : 0;
}

void LevelSetter_SetCaption(Toolkit* toolkit, Widget* setter, const std::string& caption) {
    auto* record = Widget_Record<LevelSetterRecord>(setter);
    if (!record) return;
    Label_SetText(toolkit, record->captionLabel, caption);
    PlaceLabels(toolkit, setter, record);
    Toolkit_Invalidate(toolkit, setter);
}

Widget* LevelSetter_CaptionLabel(Widget* form, const Widget* setter) {
    if (!setter || setter->id == 0) return nullptr;
    return Widget_FindById(form, LevelSetter_CaptionId(setter->id));
}

void LevelSetter_SetEnabled(Toolkit* toolkit, Widget* setter, bool enabled) {
    auto* record = Widget_Record<LevelSetterRecord>(setter);
    if (!record || record->disabled == !enabled) return;
    record->disabled = !enabled;
    record->dragging = false;
    if (!enabled && toolkit->input.focus == setter) toolkit->input.focus = nullptr;
    Toolkit_Invalidate(toolkit, setter);
}
