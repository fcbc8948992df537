// APPLET: an invisible widget that receives the toolkit's ticks (code 2, the
// payload the count of collapsed timer ticks) and hands them to its onTick,
// with the running total; the shell's splash and main-form timers are applets.
#pragma once

#include "ui/WidgetKinds.h"

int Applet_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event);

void Applet_SetTick(Widget* applet, AppletTickFn onTick, void* user);
