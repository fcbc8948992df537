// GESTUREAREA: an invisible area that reports the pointer's press, drags and
// release to its onGesture. Until one is bound it lets the pointer through to
// what lies beneath, so a form may carry one without covering its controls.
#pragma once

#include "ui/WidgetKinds.h"

int GestureArea_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event);

void GestureArea_SetCallback(Widget* area, GestureFn onGesture, void* user);
bool GestureArea_TakesPointer(const Widget* area);
