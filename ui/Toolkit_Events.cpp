// The toolkit's event ring.
#include "ui/Toolkit_Events.h"

#include "ui/Toolkit.h"

#include <cstdlib>

namespace {

uint32_t Slot(const ToolkitEventRing& ring, uint32_t k) {
    return (ring.readIndex + k) % kToolkitEventRingSize;
}

}  // namespace

void Toolkit_PostEvent(Toolkit* toolkit, Widget* widget, uint32_t code, uint32_t payload0, uint32_t payload1,
                       uint32_t payload2) {
    ToolkitEventRing& ring = toolkit->events;
    if (ring.pending >= kToolkitEventRingSize - 1) std::exit(0);
    ToolkitEvent& e = ring.entries[Slot(ring, ring.pending)];
    e.widget = widget;
    e.code = code;
    e.payload[0] = payload0;
    e.payload[1] = payload1;
    e.payload[2] = payload2;
    ++ring.pending;
}

bool Toolkit_TakeEvent(Toolkit* toolkit, ToolkitEvent* event) {
    ToolkitEventRing& ring = toolkit->events;
    if (ring.pending == 0) return false;
    if (event) *event = ring.entries[ring.readIndex];
    ring.readIndex = Slot(ring, 1);
    --ring.pending;
    return true;
}

uint32_t Toolkit_PendingEvents(const Toolkit* toolkit) {
    return toolkit->events.pending;
}
