// FIELD and the editing shared with FIELDMULTI: a text in a dark well with a
// caret. Typed characters are inserted at the caret (UTF-8), Backspace removes
// the character before it, Enter calls onEnter (a multi-line field inserts a
// line feed instead), Tab is left to the toolkit, which moves the focus. A
// press focuses the field and puts the caret at the nearest character edge.
#pragma once

#include "ui/WidgetKinds.h"

#include <string>

struct Font;

int Field_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event);

void Field_SetText(Toolkit* toolkit, Widget* field, const std::string& text);
// The text of a field or a multi-line field, or null for another kind.
const std::string* Field_Text(const Widget* field);

// Editing of a text with a caret: returns true when the key was taken.
// `multiLine` lets Enter insert a line feed.
bool Field_EditKey(std::string* text, size_t* caret, uint32_t key, bool multiLine);

// The caret offset nearest to pixel column `x` of a line drawn from `left`.
size_t Field_CaretAt(const Font* font, int32_t pixelHeight, const std::string& text, int32_t left, int32_t x);
