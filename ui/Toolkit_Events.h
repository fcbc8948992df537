// The toolkit's event ring: 16384 pending entries (widget, code, payload)
// that the toolkit dispatches to the widgets' handlers.
#pragma once

#include <cstdint>

struct Toolkit;
struct Widget;
struct ToolkitEvent;

// Queues an event. Adding one when 16383 are already pending ends the process
// with status 0: a toolkit that far behind cannot recover, and the stop is kept.
void Toolkit_PostEvent(Toolkit* toolkit, Widget* widget, uint32_t code, uint32_t payload0 = 0,
                       uint32_t payload1 = 0, uint32_t payload2 = 0);

// Takes the oldest pending event; false when none is pending.
bool Toolkit_TakeEvent(Toolkit* toolkit, ToolkitEvent* event);

uint32_t Toolkit_PendingEvents(const Toolkit* toolkit);
