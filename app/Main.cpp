// The desktop program. Until the shell arrives it starts the host, shows the
// test picture, follows the pointer and ends with status 0 when the window is
// closed, its drivers unloaded in order.
#include "app/TestPicture.h"
#include "host/Host.h"
#include "host/headless/Headless.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace {

constexpr const char* kUsage =
    "Usage: pellucida [--host=NAME] [--script=FILE]\n"
    "  --host=NAME    platform backend (sdl2 or headless; PELLUCIDA_HOST also sets it)\n"
    "  --script=FILE  input script for the headless backend\n";

struct Pointer {
    bool seen = false;
    uint32_t x = 0, y = 0;
    bool down = false;
} g_pointer;

void Redraw() {
    uint32_t* pixels = nullptr;
    uint32_t width = 0, height = 0, pixelsPerRow = 0;
    Host_Call("video", "Video_GetFramebuffer", &pixels);
    Host_Call("video", "Video_GetWidth", &width);
    Host_Call("video", "Video_GetHeight", &height);
    Host_Call("video", "Video_GetPixelsPerRow", &pixelsPerRow);
    if (!pixels) return;
    TestPicture_Draw(pixels, pixelsPerRow, width, height);
    if (g_pointer.seen)
        TestPicture_DrawMarker(pixels, pixelsPerRow, width, height, g_pointer.x, g_pointer.y, g_pointer.down);
    Host_Call("video", "Video_Blit", nullptr);
}

int OnAppEvent(AppEvent* event) {
    switch (event->kind) {
        case kAppEventResized: Redraw(); break;
        case kAppEventInput:
            if (event->payload[0] == kInputPointer) {
                g_pointer = {true, event->payload[1], event->payload[2], event->payload[3] != 0};
                Redraw();
            }
            break;
        case kAppEventCloseRequested: return 1;
        default: break;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    std::string host, script;
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], "--host=", 7) == 0) {
            host = argv[i] + 7;
        } else if (std::strncmp(argv[i], "--script=", 9) == 0) {
            script = argv[i] + 9;
        } else if (std::strcmp(argv[i], "--help") == 0) {
            std::fputs(kUsage, stdout);
            return 0;
        } else {
            std::fprintf(stderr, "pellucida: unknown argument %s\n%s", argv[i], kUsage);
            return 2;
        }
    }
    if (!Host_SelectBackend(host.c_str())) return 2;
    if (!script.empty()) {
        if (std::strcmp(Host_GetBackendName(), "headless") != 0) {
            std::fputs("pellucida: --script needs the headless backend (--host=headless)\n", stderr);
            return 2;
        }
        if (!Headless_LoadScript(script.c_str())) return 2;
    }

    Host_CreateMainWindow();
    if (!Host_Init(OnAppEvent)) return 1;
    Host_MainLoop();
    Host_Shutdown();
    Host_DestroyMainWindow();
    return 0;
}
