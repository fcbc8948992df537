// Host start-up, the system event pump and the main loop, and shutdown.
//
// Each pass of the loop: queue a tick if timer ticks were counted, deliver the
// application event ring to the handler, pump at most one system message, then
// wait for input for at most 500 ms.
#include "host/Host.h"

#include "host/Host_Backend.h"
#include "host/Host_Drivers.h"
#include "host/Host_Window.h"

namespace {

constexpr uint32_t kLoopWaitMs = 500;

int g_stopRequested = 0;  // set once the handler answered non-zero

void EnqueueKind(uint32_t kind) {
    AppEvent event;
    event.kind = kind;
    Host_Call("*", "Event_AppEventEnqueue", &event);
}

void PumpSystemEvents() {
    uint32_t pending = 0;  // stays 0 when no "event" driver answers
    Host_Call("event", "Event_SysEventGetNumPending", &pending);

    bool resized = false, close = false;
    uint32_t drops = 0;
    VideoResizeArgs lastSize;
    VideoBlitArgs* blit = nullptr;
    bool blitRequested = false;
    for (; pending != 0; --pending) {
        SysEvent event;
        Host_Call("event", "Event_SysEventGetNext", &event);
        switch (event.kind) {
            case kSysEventBlit:
                blitRequested = true;
                blit = event.blit;
                break;
            case kSysEventResized:
                resized = true;  // a later resize in the same pump replaces an earlier one
                lastSize = event.resized;
                break;
            case kSysEventClose:
                close = true;
                break;
            case kSysEventDrop:
                ++drops;
                break;
            case kSysEventInput:
                Host_Call("*", "Input_ProcessInputSysEvent", &event.input);
                break;
            default:
                break;
        }
    }
    if (resized) Host_Call("video", "Video_Resize", &lastSize);
    if (blitRequested) Host_Call("video", "Video_Blit", blit);
    for (; drops != 0; --drops) EnqueueKind(kAppEventFileDropped);
    if (close) EnqueueKind(kAppEventCloseRequested);
}

// Delivers every queued record, including those the handler queues meanwhile.
// After a non-zero answer the rest of the batch is counted off undelivered.
void DeliverQueue(HostState* host) {
    if (host->pendingCount == 0 || !host->appHandler) return;
    // Unsigned wrap-around keeps this right even after the ring overflowed.
    uint32_t index = (host->writeIndex - host->pendingCount) % kAppQueueSize;
    while (host->pendingCount != 0) {
        AppEvent* record = &host->appQueue[index];
        if (record->kind == kAppEventTick) {
            record->payload[0] = host->pendingTicks;
            host->pendingTicks = 0;
        }
        if (!g_stopRequested && host->appHandler(record) != 0) g_stopRequested = 1;
        --host->pendingCount;
        index = (index + 1) % kAppQueueSize;
    }
}

}  // namespace

void Host_CreateMainWindow() {
    HostBackend_Current()->CreateMainWindow();
}

void Host_DestroyMainWindow() {
    HostBackend_Current()->DestroyMainWindow();
}

bool Host_Init(AppEventHandler handler) {
    if (Host_GetState()) return true;
    if (!Host_CreateState()) return false;
    g_stopRequested = 0;
    HostDrivers_RegisterAll();

    Host_Call("*", "Event_AppEventSetHandler", reinterpret_cast<void*>(handler));
    EnqueueKind(kAppEventStart);

    // The first events the handler sees are start, then resized.
    VideoResizeArgs size;
    Host_Call("video", "Video_GetWidth", &size.width);
    Host_Call("video", "Video_GetHeight", &size.height);
    size.driver = Host_FindDriver("video");
    Host_Call("video", "Video_Resize", &size);
    return true;
}

int Host_LoopPass() {
    HostState* host = Host_GetState();
    if (!host) return 1;
    if (host->pendingTicks != 0) EnqueueKind(kAppEventTick);
    DeliverQueue(host);
    PumpSystemEvents();
    HostBackend_Current()->WaitForInput(kLoopWaitMs);
    return g_stopRequested;
}

void Host_MainLoop() {
    while (Host_LoopPass() == 0) {
    }
}

void Host_Shutdown() {
    if (!Host_GetState()) return;
    Host_DriversUnloadAll();
    Host_DestroyState();
    g_stopRequested = 0;
}
