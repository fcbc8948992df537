// SDL2 backend, single-instance side: requests from later starts arrive on the
// listening thread and wait in a queue; a wake-up event gets the message pump
// out of its wait, and the main thread then raises the window and hands a
// file over as if it had been dropped on it.
#include "host/Host_Instance.h"
#include "host/Host_Window.h"
#include "host/sdl2/Sdl2_Private.h"

#include <cstdio>
#include <deque>
#include <mutex>

namespace {

// Filled by the listening thread, emptied by the main thread. Requests that
// come before the window exists wait for it.
struct InstanceQueue {
    std::mutex mutex;
    std::deque<HostInstanceRequest> requests;
    uint32_t wakeEvent = 0;  // 0 while SDL's event queue is down
};

InstanceQueue g_queue;

}  // namespace

void Sdl2_InstanceRequested(const HostInstanceRequest& request) {
    std::lock_guard<std::mutex> lock(g_queue.mutex);
    g_queue.requests.push_back(request);
    if (g_queue.wakeEvent) {
        SDL_Event event{};
        event.type = g_queue.wakeEvent;
        SDL_PushEvent(&event);  // thread-safe in SDL
    }
}

void Sdl2_InstanceEventsUp(uint32_t wakeEvent) {
    std::lock_guard<std::mutex> lock(g_queue.mutex);
    g_queue.wakeEvent = wakeEvent;
}

void Sdl2_InstanceEventsDown() {
    std::lock_guard<std::mutex> lock(g_queue.mutex);
    g_queue.wakeEvent = 0;
}

bool Sdl2_InstanceRequestWaiting() {
    std::lock_guard<std::mutex> lock(g_queue.mutex);
    return !g_queue.requests.empty();
}

bool Sdl2_InstanceServeOne() {
    HostInstanceRequest request;
    {
        std::lock_guard<std::mutex> lock(g_queue.mutex);
        if (g_queue.requests.empty()) return false;
        request = std::move(g_queue.requests.front());
        g_queue.requests.pop_front();
    }
    SDL_Window* window = Sdl2_State().window;
    if (window) {
        if (SDL_GetWindowFlags(window) & SDL_WINDOW_MINIMIZED) SDL_RestoreWindow(window);
        SDL_RaiseWindow(window);
        Sdl2_Activate(request.startupId);
    }
    std::printf("Brought forward by another start%s%s\n", request.path.empty() ? "" : " to open ",
                request.path.c_str());
    std::fflush(stdout);
    if (!request.path.empty()) HostWindow_OnDrop(request.path.c_str());
    return true;
}
