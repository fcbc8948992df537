// The "event" driver: the application event ring and its handler, the system
// event source (the backend's message pump), and the tick timer's lifetime.
#include "host/Host_Drivers.h"

#include "host/Host_Backend.h"
#include "host/Host_Window.h"

namespace {

bool g_timerRunning = false;

void StartTimer() {
    if (g_timerRunning) return;
    HostBackend_Current()->TimerStart();
    g_timerRunning = true;
}

void SysEventGetNext(HostDriver*, HostMethod*, void* argument) {
    // Dispatching runs the window procedure, which fills the pending slot.
    if (!HostBackend_Current()->DispatchOneMessage()) return;
    HostWindow_TakePending(static_cast<SysEvent*>(argument));
}

void SysEventGetNumPending(HostDriver*, HostMethod*, void* argument) {
    *static_cast<uint32_t*>(argument) = HostBackend_Current()->MessagePending() ? 1 : 0;
}

void AppEventSetHandler(HostDriver*, HostMethod*, void* argument) {
    Host_GetState()->appHandler = reinterpret_cast<AppEventHandler>(argument);
}

void AppEventEnqueue(HostDriver*, HostMethod*, void* argument) {
    // No overflow test: the 1025th undelivered record overwrites the oldest.
    HostState* host = Host_GetState();
    host->appQueue[host->writeIndex % kAppQueueSize] = *static_cast<AppEvent*>(argument);
    host->writeIndex = (host->writeIndex + 1) % kAppQueueSize;
    ++host->pendingCount;
}

// The path of the oldest file dropped on the window (argument: std::string*);
// the string is left as it was when none waits.
void TakeDroppedFile(HostDriver*, HostMethod*, void* argument) {
    HostWindow_TakeDrop(static_cast<std::string*>(argument));
}

void Destruct(HostDriver* driver, HostMethod*, void*) {
    if (driver->useCount != 1 || !g_timerRunning) return;
    HostBackend_Current()->TimerStop();
    g_timerRunning = false;
}

void Resume(HostDriver*, HostMethod*, void*) {
    StartTimer();
}

}  // namespace

HostDriver* HostDrivers_RegisterEvent() {
    HostDriver* driver = Host_DriverCreate("event");
    Host_DriverAddMethod(driver, "Event_SysEventGetNext", SysEventGetNext);
    Host_DriverAddMethod(driver, "Event_SysEventGetNumPending", SysEventGetNumPending);
    Host_DriverAddMethod(driver, "Event_AppEventSetHandler", AppEventSetHandler);
    Host_DriverAddMethod(driver, "Event_AppEventEnqueue", AppEventEnqueue);
    Host_DriverAddMethod(driver, "Event_TakeDroppedFile", TakeDroppedFile);
    Host_DriverAddMethod(driver, "DESTRUCT", Destruct);
    Host_DriverAddMethod(driver, "RESUME", Resume);
    // The tick timer is set up with the driver; RESUME restarts it if a
    // suspension let it be stopped.
    StartTimer();
    return driver;
}
