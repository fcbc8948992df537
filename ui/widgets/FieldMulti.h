// FIELDMULTI: a field of several lines, wrapped at the width, where Enter
// starts a new line. The caret follows the last line typed; when the text is
// taller than the field the last lines stay in view.
#pragma once

#include "ui/WidgetKinds.h"

int FieldMulti_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event);
