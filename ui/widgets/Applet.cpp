// Ticks for applets.
#include "ui/widgets/Applet.h"

int Applet_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event) {
    auto* record = Widget_Record<AppletRecord>(widget);
    if (!record || event->code != kEventTick) return event->code == kEventDraw ? 1 : 0;
    const uint32_t ticks = event->payload[0] ? event->payload[0] : 1;
    record->elapsed += ticks;
    if (record->onTick) record->onTick(toolkit, widget, ticks, record->elapsed, record->user);
    return 1;
}

void Applet_SetTick(Widget* applet, AppletTickFn onTick, void* user) {
    if (auto* record = Widget_Record<AppletRecord>(applet)) {
        record->onTick = onTick;
        record->user = user;
    }
}
