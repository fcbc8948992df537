// Pointer gestures for code.
#include "ui/widgets/GestureArea.h"

int GestureArea_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event) {
    auto* record = Widget_Record<GestureAreaRecord>(widget);
    if (event->code == kEventDraw) return 1;
    if (!record || !record->onGesture) return 0;
    if (event->code != kEventPress && event->code != kEventDrag && event->code != kEventRelease) return 0;
    record->onGesture(toolkit, widget, event->code, static_cast<int32_t>(event->payload[0]),
                      static_cast<int32_t>(event->payload[1]), record->user);
    return 1;
}

void GestureArea_SetCallback(Widget* area, GestureFn onGesture, void* user) {
    if (auto* record = Widget_Record<GestureAreaRecord>(area)) {
        record->onGesture = onGesture;
        record->user = user;
    }
}

bool GestureArea_TakesPointer(const Widget* area) {
    const auto* record = Widget_Record<GestureAreaRecord>(area);
    return record && record->onGesture;
}
