// LABEL: text on its parent's background. Lines break at line feeds and, when
// too long for the label, between words; the block is centred vertically (or
// set at the bottom with Align="Bottom"), each line aligned left, right or
// centre. A label never clips a line mid-glyph: the last line that fits ends
// in an ellipsis when more text follows.
#pragma once

#include "ui/Widget.h"

#include <string>

int Label_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event);

// Replaces the text and asks for the label to be redrawn.
void Label_SetText(Toolkit* toolkit, Widget* label, const std::string& text);
const std::string* Label_Text(const Widget* label);
