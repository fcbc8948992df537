// The shared window procedure: what a native window message means to the host,
// the same on every backend. At most one system event is pending at a time.
#include "host/Host_Window.h"

namespace {

HostWindowState g_window;  // the main window's process-wide values

void SetPendingInput(uint32_t device, uint32_t a, uint32_t b, uint32_t c) {
    g_window.pending = SysEvent{};
    g_window.pending.kind = kSysEventInput;
    g_window.pending.input.device = device;
    g_window.pending.input.value[0] = a;
    g_window.pending.input.value[1] = b;
    g_window.pending.input.value[2] = c;
}

}  // namespace

HostWindowState& HostWindow_State() {
    return g_window;
}

void HostWindow_OnCreated(uint32_t clientWidth, uint32_t clientHeight) {
    g_window = HostWindowState{};
    g_window.exists = true;
    g_window.clientWidth = clientWidth;
    g_window.clientHeight = clientHeight;
}

void HostWindow_OnDestroyed() {
    g_window.exists = false;
}

void HostWindow_OnSize(uint32_t width, uint32_t height) {
    // Sizes travel as 16-bit values in the window messages.
    width &= 0xFFFF;
    height &= 0xFFFF;
    if (width == 0 || height == 0) return;  // minimised: keep the framebuffer
    if (width == g_window.clientWidth && height == g_window.clientHeight) return;
    g_window.clientWidth = width;
    g_window.clientHeight = height;
    g_window.pending = SysEvent{};
    g_window.pending.kind = kSysEventResized;
    g_window.pending.resized.width = width;
    g_window.pending.resized.height = height;
    g_window.pending.resized.driver = Host_FindDriver("video");
}

void HostWindow_OnClose() {
    // The window is not destroyed here: the program decides (it may ask first).
    g_window.pending = SysEvent{};
    g_window.pending.kind = kSysEventClose;
}

void HostWindow_OnChar(uint32_t code) {
    SetPendingInput(kInputKeyboard, code, 1, 0);
}

void HostWindow_OnButton(uint32_t x, uint32_t y, bool down) {
    g_window.buttonState = down ? 1 : 0;
    SetPendingInput(kInputPointer, x & 0xFFFF, y & 0xFFFF, g_window.buttonState);
}

void HostWindow_OnPointerMove(uint32_t x, uint32_t y) {
    SetPendingInput(kInputPointer, x & 0xFFFF, y & 0xFFFF, g_window.buttonState);
}

void HostWindow_OnTimer() {
    if (HostState* host = Host_GetState()) ++host->pendingTicks;
}

void HostWindow_OnPaint() {
    Host_Call("*", "Video_Blit", nullptr);
}

void HostWindow_TakePending(SysEvent* out) {
    *out = g_window.pending;
    g_window.pending = SysEvent{};
}

void HostWindow_OnDrop(const char* path) {
    if (!path || !*path) return;
    g_window.drops.emplace_back(path);
    g_window.pending = SysEvent{};
    g_window.pending.kind = kSysEventDrop;
}

bool HostWindow_TakeDrop(std::string* path) {
    if (g_window.drops.empty()) return false;
    *path = std::move(g_window.drops.front());
    g_window.drops.pop_front();
    return true;
}
