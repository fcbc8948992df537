// The on-screen keyboard's placeholder handler.
#include "ui/widgets/VirtualKeyboard.h"

int VirtualKeyboard_Handle(Toolkit*, Widget*, const WidgetEvent* event) {
    return event->code == kEventDraw ? 1 : 0;
}
