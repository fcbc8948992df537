// LIST: rows of text in a dark well; a press chooses the row under the
// pointer (onSelect), the chosen row is marked with the accent. Rows that do
// not fit scroll so that the chosen one stays in view.
#pragma once

#include "ui/Toolkit.h"
#include "ui/WidgetKinds.h"

#include <string>
#include <vector>

int List_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event);

void List_SetItems(Toolkit* toolkit, Widget* list, std::vector<std::string> items);
void List_Select(Toolkit* toolkit, Widget* list, int32_t index);
// The height of one row for the toolkit's text.
int32_t List_RowHeight(const Toolkit* toolkit);
// Where row `index` is on the screen; empty when it is scrolled out of view.
PixelRect List_RowRect(const Toolkit* toolkit, const Widget* list, int32_t index);
