// Dispatching toolkit events to widgets: pointer events are hit-tested in
// pixels against the normalised rectangles of the form on top, a press
// captures the pointer for the widget it landed on (its drags and the release
// go there), characters go to the focused widget or, failing that, to the
// control whose quick key they are, and draw requests redraw only the widget
// they name, after which the framebuffer is blitted.
#pragma once

#include "ui/Widget.h"
#include "ui/draw/Draw_Surface.h"

#include <cstdint>

struct Toolkit;

// Keys the character event carries.
inline constexpr uint32_t kKeyBackspace = 8;
inline constexpr uint32_t kKeyTab = 9;
inline constexpr uint32_t kKeyEnter = 13;
inline constexpr uint32_t kKeyEscape = 27;

// Runs every pending event in order, including those that handlers post
// meanwhile, then blits what was drawn. Returns the number of events run.
uint32_t Toolkit_Dispatch(Toolkit* toolkit);

// Runs, in order, the pending draw requests (code 8) that carry no other
// payload, and leaves every other entry queued as it was.
void Toolkit_ProcessPendingDraws(Toolkit* toolkit);

// Turns the pointer state the host reports (position, button down) into a
// press, drag or release posted to the root; a move with the button up posts nothing.
void Toolkit_PostPointer(Toolkit* toolkit, uint32_t x, uint32_t y, bool down);

// Calls the widget's handler (or its kind's) with one event.
int Widget_Send(Toolkit* toolkit, Widget* widget, uint32_t code, uint32_t payload0 = 0, uint32_t payload1 = 0,
                uint32_t payload2 = 0);

// Asks for the widget to be redrawn: posts a draw request for it.
void Toolkit_Invalidate(Toolkit* toolkit, Widget* widget);

// Draws the widget and its subtree at once, over the background of what
// lies behind it, clipped to its rectangle.
void Toolkit_DrawWidget(Toolkit* toolkit, Widget* widget);
// Draws everything: the root, its forms and the modal boxes over them.
void Toolkit_DrawAll(Toolkit* toolkit);
// Blits the framebuffer when anything was drawn since the last blit.
void Toolkit_Present(Toolkit* toolkit);

// The deepest visible widget under (x, y) inside `from` that takes the
// pointer, or null.
Widget* Toolkit_HitTest(Toolkit* toolkit, Widget* from, int32_t x, int32_t y);

// Keyboard focus: only controls that take characters or keys can hold it.
bool Widget_IsFocusable(const Widget* widget);
void Toolkit_SetFocus(Toolkit* toolkit, Widget* widget);
// Moves the focus to the next (or previous) focusable control of the form on top.
void Toolkit_FocusNext(Toolkit* toolkit, bool backwards);
// The control of the form on top whose quick key is `key`, or null.
Widget* Toolkit_FindQuickKey(Toolkit* toolkit, uint32_t key);

// Drops every reference the toolkit holds into the subtree (capture, focus,
// pending events) before it is freed.
void Toolkit_ForgetSubtree(Toolkit* toolkit, Widget* subtree);

// True when `widget` lies in the subtree of `ancestor` (or is it).
bool Widget_IsWithin(const Widget* widget, const Widget* ancestor);

// The framebuffer as a surface, clipped to the whole screen.
Surface Toolkit_ScreenSurface(const Toolkit* toolkit);
