// LEVELSETTER: the toolkit's slider. Its caption label (left) and value label
// (right) are its own child widgets on the upper half; the track with its knob
// fills the lower half. A press on the track moves the knob there and drags
// it smoothly; every change of position formats the value label (ValueLabel.h)
// and redraws the setter at once, so the label follows the drag. Range and
// position are set by code. Its caption in a module form is the label whose
// identifier is the setter's minus 0x00140700 ("LvS0" pairs with "LbL0").
#pragma once

#include "ui/WidgetKinds.h"

inline constexpr uint32_t kLevelSetterCaptionOffset = 0x00140700;

int LevelSetter_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event);

// Sets the range, the position and the value label's formatter, and formats the label.
void LevelSetter_Setup(Toolkit* toolkit, Widget* setter, uint32_t maximum, uint32_t value,
                       LevelSetterFormatFn format = nullptr, void* formatUser = nullptr);
// Moves to `value` (held to the range); formats the label and redraws. Calls
// onChange only when `notify` is set.
void LevelSetter_SetValue(Toolkit* toolkit, Widget* setter, uint32_t value, bool notify = false);
uint32_t LevelSetter_Value(const Widget* setter);
// Greys the setter out (it ignores the pointer and its keys) or back.
void LevelSetter_SetEnabled(Toolkit* toolkit, Widget* setter, bool enabled);
void LevelSetter_SetCaption(Toolkit* toolkit, Widget* setter, const std::string& caption);

// The track's rectangle in pixels: the knob's centre runs from its left to its right edge.
struct LevelSetterTrack {
    int32_t left = 0;
    int32_t right = 0;
    int32_t centreY = 0;
    int32_t knobRadius = 0;
};
LevelSetterTrack LevelSetter_Track(const Toolkit* toolkit, const Widget* setter);
// The position for pointer column x.
uint32_t LevelSetter_PositionAt(const Toolkit* toolkit, const Widget* setter, int32_t x);

constexpr uint32_t LevelSetter_CaptionId(uint32_t setterId) {
    return setterId - kLevelSetterCaptionOffset;
}
Widget* LevelSetter_CaptionLabel(Widget* form, const Widget* setter);
