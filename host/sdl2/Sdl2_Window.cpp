// SDL2 backend, window side: the main window titled "Pellucida" (800 x 480
// client pixels, then maximised), the framebuffer blitted through a streaming
// texture, the arrow and wait cursors and the plain message box; the file
// dialogs are Sdl2_FileDialog.cpp's. HiDPI: the framebuffer has the screen's
// real pixels. Dependencies: SDL2.
#include "host/Host_Backend.h"
#include "host/Host_Instance.h"
#include "host/Host_Threads.h"
#include "host/Host_Window.h"
#include "host/sdl2/Sdl2_Private.h"

#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr int kInitialClientWidth = 800;
constexpr int kInitialClientHeight = 480;
constexpr uint32_t kMaximiseWaitMs = 500;
constexpr const char* kCouldNotCreateWindow = "Could not create window\n";
constexpr const char* kCouldNotObtainContext = "Could not obtain window device context\n";

struct Sdl2Framebuffer {
    std::vector<uint32_t> pixels;
    SDL_Texture* texture = nullptr;
};

// The text is already on standard error (HostBackend_ShowMessage), so a box
// that cannot be shown loses nothing.
void ShowMessage(const char* caption, const char* text) {
    SDL_ShowSimpleMessageBox(SDL_MESSAGEBOX_INFORMATION, caption, text, Sdl2_State().window);
}

// Window creation failures end the process with status 0, as on every platform.
[[noreturn]] void WindowFailed(const char* message) {
    HostBackend_ShowMessage(kHostMessageCaption, message);
    std::exit(0);
}

// The toolkit sizes its controls from the first framebuffer, so the window is
// measured once maximised, as it is on Windows, where maximising is done when
// the call returns. On X11 the window manager does it later: wait a moment for
// it (a window manager may also refuse, or there may be none).
void WaitForMaximised(SDL_Window* window) {
    int startW = 0, startH = 0;
    SDL_GetWindowSize(window, &startW, &startH);
    const uint32_t deadline = SDL_GetTicks() + kMaximiseWaitMs;
    while (!SDL_TICKS_PASSED(SDL_GetTicks(), deadline)) {
        SDL_PumpEvents();
        int w = 0, h = 0;
        SDL_GetWindowSize(window, &w, &h);
        if ((SDL_GetWindowFlags(window) & SDL_WINDOW_MAXIMIZED) && (w != startW || h != startH)) return;
        SDL_Delay(10);
    }
}

void CreateMainWindow() {
    Sdl2State& s = Sdl2_State();
    // The program decides what closing means (it may ask first).
    SDL_SetHint(SDL_HINT_QUIT_ON_LAST_WINDOW_CLOSE, "0");
    SDL_SetHint(SDL_HINT_VIDEO_X11_NET_WM_BYPASS_COMPOSITOR, "0");
    if (SDL_Init(SDL_INIT_VIDEO | SDL_INIT_TIMER | SDL_INIT_EVENTS) != 0) WindowFailed(kCouldNotCreateWindow);
    s.window =
        SDL_CreateWindow("Pellucida", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, kInitialClientWidth,
                         kInitialClientHeight, SDL_WINDOW_RESIZABLE | SDL_WINDOW_ALLOW_HIGHDPI);
    if (!s.window) WindowFailed(kCouldNotCreateWindow);
    s.renderer = SDL_CreateRenderer(s.window, -1, 0);
    if (!s.renderer) s.renderer = SDL_CreateRenderer(s.window, -1, SDL_RENDERER_SOFTWARE);
    if (!s.renderer) WindowFailed(kCouldNotObtainContext);
    s.timerEvent = SDL_RegisterEvents(2);
    s.wakeEvent = s.timerEvent + 1;
    Sdl2_InstanceEventsUp(s.wakeEvent);
    s.arrow = SDL_CreateSystemCursor(SDL_SYSTEM_CURSOR_ARROW);
    s.wait = SDL_CreateSystemCursor(SDL_SYSTEM_CURSOR_WAIT);
    SDL_StartTextInput();

    SDL_ShowWindow(s.window);
    SDL_MaximizeWindow(s.window);
    SDL_RaiseWindow(s.window);
    WaitForMaximised(s.window);
    // A launcher that started us shows busy feedback until the window says it
    // is there.
    Sdl2_Activate(HostOs_StartupId());
    HostOs_ForgetStartupId();
    uint32_t width, height;
    Sdl2_ClientSize(&width, &height);
    HostWindow_OnCreated(width, height);
}

void DestroyMainWindow() {
    Sdl2State& s = Sdl2_State();
    HostWindow_OnDestroyed();
    Sdl2_InstanceEventsDown();
    if (s.arrow) SDL_FreeCursor(s.arrow);
    if (s.wait) SDL_FreeCursor(s.wait);
    if (s.renderer) SDL_DestroyRenderer(s.renderer);
    if (s.window) SDL_DestroyWindow(s.window);
    s = Sdl2State{};
    SDL_Quit();
}

bool FramebufferCreate(VideoState* video) {
    Sdl2State& s = Sdl2_State();
    if (!s.renderer) return false;
    auto* fb = new Sdl2Framebuffer();
    fb->pixels.assign(size_t(video->pixelsPerRow) * video->rows, 0);
    if (video->width > 0 && video->height > 0)
        fb->texture = SDL_CreateTexture(s.renderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_STREAMING,
                                        int(video->width), int(video->height));
    video->platform = fb;
    video->pixels = fb->pixels.data();
    return true;
}

void FramebufferDestroy(VideoState* video) {
    auto* fb = static_cast<Sdl2Framebuffer*>(video->platform);
    if (fb && fb->texture) SDL_DestroyTexture(fb->texture);
    delete fb;
    video->platform = nullptr;
    video->pixels = nullptr;
}

void Present(VideoState* video) {
    Sdl2State& s = Sdl2_State();
    auto* fb = static_cast<Sdl2Framebuffer*>(video->platform);
    if (!s.renderer || !fb || !fb->texture) return;
    SDL_UpdateTexture(fb->texture, nullptr, video->pixels, int(video->pixelsPerRow * 4));
    SDL_SetRenderDrawColor(s.renderer, 0, 0, 0, 255);
    SDL_RenderClear(s.renderer);
    SDL_Rect target = {0, 0, int(video->width), int(video->height)};
    SDL_RenderCopy(s.renderer, fb->texture, nullptr, &target);
    SDL_RenderPresent(s.renderer);
}

void SetCursor(HostCursor cursor) {
    Sdl2State& s = Sdl2_State();
    SDL_Cursor* shape = cursor == kHostCursorWait ? s.wait : s.arrow;
    if (shape) SDL_SetCursor(shape);
}

}  // namespace

Sdl2State& Sdl2_State() {
    static Sdl2State state;
    return state;
}

void Sdl2_ClientSize(uint32_t* width, uint32_t* height) {
    int w = 0, h = 0;
    Sdl2State& s = Sdl2_State();
    if (s.renderer) SDL_GetRendererOutputSize(s.renderer, &w, &h);
    *width = uint32_t(w > 0 ? w : 0);
    *height = uint32_t(h > 0 ? h : 0);
}

void Sdl2_ToPixels(int x, int y, uint32_t* px, uint32_t* py) {
    Sdl2State& s = Sdl2_State();
    int windowW = 0, windowH = 0;
    SDL_GetWindowSize(s.window, &windowW, &windowH);
    uint32_t pixelW, pixelH;
    Sdl2_ClientSize(&pixelW, &pixelH);
    if (windowW > 0 && windowH > 0 && (int(pixelW) != windowW || int(pixelH) != windowH)) {
        x = int(int64_t(x) * pixelW / windowW);
        y = int(int64_t(y) * pixelH / windowH);
    }
    // Positions travel as 16-bit values, as in the platform's pointer messages.
    *px = uint32_t(x) & 0xFFFF;
    *py = uint32_t(y) & 0xFFFF;
}

extern const HostBackend kSdl2Backend = {
    "sdl2",
    "desktop window through SDL2",
    CreateMainWindow,
    DestroyMainWindow,
    FramebufferCreate,
    FramebufferDestroy,
    Present,
    SetCursor,
    Sdl2_MessagePending,
    Sdl2_DispatchOneMessage,
    Sdl2_WaitForInput,
    Sdl2_TimerStart,
    Sdl2_TimerStop,
    ShowMessage,
    Sdl2_FileDialog,
    Sdl2_InstanceRequested,
    Sdl2_DisplayScale,
};
