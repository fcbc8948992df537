// VIRTUALKEYBOARD: the on-screen keyboard of touch screens. Its element is
// read (with NumbersOnly) so that forms carrying it build; it does not draw
// or take input yet.
// FIXME: rows of keys ("qwertyuiop" ...) posting characters to the focus.
#pragma once

#include "ui/WidgetKinds.h"

int VirtualKeyboard_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event);
