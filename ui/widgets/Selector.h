// SELECTOR: one of its items shown between two arrows; a press on the left
// part steps back, elsewhere forward, cycling at either end. Its caption is a
// label of the same form whose identifier is the selector's minus 0x070A0000
// ("SlS0" pairs with "LbS0").
#pragma once

#include "ui/WidgetKinds.h"

inline constexpr uint32_t kSelectorCaptionOffset = 0x070A0000;

int Selector_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event);

// Shows item `index` (held to the items); calls onChange when it changed.
void Selector_Select(Toolkit* toolkit, Widget* selector, uint32_t index);
// The text of the item shown, or null when there is none.
const std::string* Selector_Item(const Widget* selector);

constexpr uint32_t Selector_CaptionId(uint32_t selectorId) {
    return selectorId - kSelectorCaptionOffset;
}
// The caption label found from `form`, or null.
Widget* Selector_CaptionLabel(Widget* form, const Widget* selector);
