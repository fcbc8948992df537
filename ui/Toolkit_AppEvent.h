// From the host's application events to toolkit events: what the shell's
// handler does for every screen. A resize lets the root adopt the new
// framebuffer and posts 16 then 8; a keyboard character (second value 1) posts
// 2048; the pointer posts press, drag or release; a tick posts 2 with the
// number of timer ticks it stands for. The events are then dispatched and what
// was drawn is blitted.
#pragma once

#include <cstdint>

struct AppEvent;
struct Toolkit;

// Returns 1 when the event asks the program to stop (close requested).
int Toolkit_OnAppEvent(Toolkit* toolkit, const AppEvent* event);
