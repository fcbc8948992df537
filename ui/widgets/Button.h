// BUTTON: text and/or an icon from the archive on a rounded body, glossy (a
// vertical gradient) unless NoGloss, or Flat with no body until pressed. The
// Rounded mask picks the rounded corners, so buttons side by side can form a
// segmented group; a side whose corners are both rounded keeps a small gap to
// its neighbour. A press shows the button pressed while the pointer stays on
// it; the release over it calls onPress. Enter or space on a focused button,
// and its quick key, press it too. A disabled button is greyed and inert.
#pragma once

#include "ui/WidgetKinds.h"

int Button_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event);

void Button_SetText(Toolkit* toolkit, Widget* button, const std::string& text);
void Button_SetEnabled(Toolkit* toolkit, Widget* button, bool enabled);
void Button_SetCallback(Widget* button, WidgetCallback onPress, void* user);
