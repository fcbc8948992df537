// Translating application events into toolkit events.
#include "ui/Toolkit_AppEvent.h"

#include "host/Host.h"
#include "ui/Entities.h"
#include "ui/Toolkit.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/Toolkit_Events.h"

int Toolkit_OnAppEvent(Toolkit* toolkit, const AppEvent* event) {
    if (!toolkit || !event) return 0;
    Widget* root = toolkit->root.get();
    switch (event->kind) {
        case kAppEventResized:
            Toolkit_MeasureScreen(toolkit);
            Toolkit_PostEvent(toolkit, root, kEventResized);
            Toolkit_PostEvent(toolkit, root, kEventDraw);
            break;
        case kAppEventInput:
            if (event->payload[0] == kInputKeyboard) {
                if (event->payload[2] == 1)
                    Toolkit_PostEvent(toolkit, root, kEventCharacter, event->payload[1]);
            } else if (event->payload[0] == kInputPointer) {
                Toolkit_PostPointer(toolkit, event->payload[1], event->payload[2], event->payload[3] != 0);
            }
            break;
        case kAppEventTick:
            // The count of collapsed timer ticks: time goes on while the handler is busy.
            Toolkit_PostEvent(toolkit, root, kEventTick, event->payload[0]);
            break;
        case kAppEventCloseRequested:
            return 1;
        default:
            break;
    }
    Toolkit_Dispatch(toolkit);
    return 0;
}
