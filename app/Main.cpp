// The desktop program. Until the shell arrives it starts the host, shows the
// test picture, follows the pointer and ends with status 0 when the window is
// closed, its drivers unloaded in order.
#include "app/TestPicture.h"
#include "host/Host.h"
#include "host/Host_Run.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr const char* kUsage = "Usage: pellucida [--host=NAME] [--script=FILE]\n";

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
        case kAppEventResized:
            Redraw();
            break;
        case kAppEventInput:
            if (event->payload[0] == kInputPointer) {
                g_pointer = {true, event->payload[1], event->payload[2], event->payload[3] != 0};
                Redraw();
            }
            break;
        case kAppEventCloseRequested:
            return 1;
        default:
            break;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    HostOptions options;
    for (int i = 1; i < argc; ++i) {
        if (Host_ParseOption(argv[i], &options)) continue;
        if (std::strcmp(argv[i], "--help") == 0) {
            std::printf("%s%s", kUsage, kHostOptionsHelp);
            return 0;
        }
        std::fprintf(stderr, "pellucida: unknown argument %s\n%s%s", argv[i], kUsage, kHostOptionsHelp);
        return 2;
    }
    return Host_Run("pellucida", options, OnAppEvent);
}
