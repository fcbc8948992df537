// The "keyboard" and "pointer" drivers. Both answer Input_ProcessInputSysEvent;
// a broadcast reaches both and each turns only its own device's records into
// input application events.
#include "host/Host_Drivers.h"

namespace {

void EnqueueInput(const SysInput& input) {
    AppEvent event;
    event.kind = kAppEventInput;
    event.payload[0] = input.device;
    event.payload[1] = input.value[0];
    event.payload[2] = input.value[1];
    event.payload[3] = input.value[2];
    Host_Call("*", "Event_AppEventEnqueue", &event);
}

void ProcessKeyboard(HostDriver*, HostMethod*, void* argument) {
    const auto* input = static_cast<const SysInput*>(argument);
    if (!input || input->device != kInputKeyboard) return;
    SysInput key = *input;
    key.value[1] = 1;
    key.value[2] = 0;
    EnqueueInput(key);
}

void ProcessPointer(HostDriver*, HostMethod*, void* argument) {
    const auto* input = static_cast<const SysInput*>(argument);
    if (!input || input->device != kInputPointer) return;
    EnqueueInput(*input);
}

void Destruct(HostDriver*, HostMethod*, void*) {}  // no private state

}  // namespace

HostDriver* HostDrivers_RegisterKeyboard() {
    HostDriver* driver = Host_DriverCreate("keyboard");
    Host_DriverAddMethod(driver, "Input_ProcessInputSysEvent", ProcessKeyboard);
    Host_DriverAddMethod(driver, "DESTRUCT", Destruct);
    return driver;
}

HostDriver* HostDrivers_RegisterPointer() {
    HostDriver* driver = Host_DriverCreate("pointer");
    Host_DriverAddMethod(driver, "Input_ProcessInputSysEvent", ProcessPointer);
    Host_DriverAddMethod(driver, "DESTRUCT", Destruct);
    return driver;
}
