// The LAYOUT widget: a 3 x 3 grid that places its children (ui/Layout.h).
// It draws only when FillBackground asks it to fill its area with the panel colour.
#pragma once

#include "ui/Widget.h"

int LayoutWidget_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event);
