// Forms: the root's drawing area and FORM widgets fill their area with the
// ground colour. Modal forms (message boxes, the progress dialog) are forms
// created on top of the screen by code: each saves the context's drawing state
// on the stack of 9 when it opens and restores it when it closes, takes the
// pointer and the keyboard while it is up, and dims what lies beneath.
#pragma once

#include "ui/WidgetKinds.h"

struct Toolkit;

int Form_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event);

// Pushes the drawing state (when fewer than 9 are held), adds `form` (already
// given its record) as the topmost child of the root, makes it the form on
// top and asks for a redraw of the screen.
Widget* ModalForm_Open(Toolkit* toolkit, std::unique_ptr<WidgetRecord> record, uint32_t id);

// Takes the form off the screen: drops references into it, restores the
// state saved when it opened and redraws. The widget is freed after the
// current dispatch, so a handler inside it may close it.
void ModalForm_Close(Toolkit* toolkit, Widget* form);

// Sets a widget's rectangle from pixels relative to its parent's pixel rectangle.
void Widget_SetPixelRect(const Toolkit* toolkit, Widget* widget, int32_t x, int32_t y, int32_t width,
                         int32_t height);

// Draws the panel of a modal form with its title: a rounded card with a
// border, the title on a band at the top. Returns the band's height.
int32_t ModalForm_DrawPanel(Toolkit* toolkit, Widget* form, const char* title);
