// SDL2 backend, message side: SDL's events become calls of the shared window
// procedure, one message per dispatch; the 100 ms tick timer posts an event of
// our own type, and a tick that reaches the window removes the others waiting.
#include "host/Host_Window.h"
#include "host/sdl2/Sdl2_Private.h"

namespace {

constexpr uint32_t kTickMs = 100;

// Runs on SDL's timer thread: it only posts an event.
uint32_t OnTimer(uint32_t interval, void*) {
    SDL_Event event{};
    event.type = Sdl2_State().timerEvent;
    SDL_PushEvent(&event);
    return interval;
}

// UTF-8 text into code points.
void QueueText(const char* text) {
    auto* p = reinterpret_cast<const unsigned char*>(text);
    while (*p) {
        uint32_t code = *p++;
        int extra = code >= 0xF0 ? 3 : code >= 0xE0 ? 2 : code >= 0xC0 ? 1 : 0;
        if (extra) code &= 0x3F >> extra;
        for (; extra > 0 && (*p & 0xC0) == 0x80; --extra) code = (code << 6) | (*p++ & 0x3F);
        Sdl2_State().pendingChars.push_back(code);
    }
}

uint32_t ControlKeyCode(SDL_Keycode key) {
    switch (key) {
        case SDLK_BACKSPACE:
            return kCharBackspace;
        case SDLK_TAB:
            return kCharTab;
        case SDLK_RETURN:
        case SDLK_KP_ENTER:
            return kCharEnter;
        case SDLK_ESCAPE:
            return kCharEscape;
        default:
            return 0;
    }
}

void OnWindowEvent(const SDL_WindowEvent& window) {
    switch (window.event) {
        case SDL_WINDOWEVENT_SIZE_CHANGED: {
            uint32_t width, height;
            Sdl2_ClientSize(&width, &height);
            HostWindow_OnSize(width, height);
            break;
        }
        case SDL_WINDOWEVENT_EXPOSED:
            HostWindow_OnPaint();
            break;
        case SDL_WINDOWEVENT_CLOSE:
            HostWindow_OnClose();
            break;
        default:
            break;
    }
}

}  // namespace

bool Sdl2_MessagePending() {
    Sdl2State& s = Sdl2_State();
    if (!s.pendingChars.empty() || Sdl2_InstanceRequestWaiting()) return true;
    SDL_PumpEvents();
    return SDL_PeepEvents(nullptr, 0, SDL_PEEKEVENT, SDL_FIRSTEVENT, SDL_LASTEVENT) > 0;
}

bool Sdl2_DispatchOneMessage() {
    Sdl2State& s = Sdl2_State();
    if (!s.pendingChars.empty()) {
        uint32_t code = s.pendingChars.front();
        s.pendingChars.pop_front();
        HostWindow_OnChar(code);
        return true;
    }
    if (Sdl2_InstanceServeOne()) return true;
    SDL_Event e;
    if (!SDL_PollEvent(&e)) return false;
    if (e.type == s.wakeEvent) return true;  // the request itself waits in its own queue
    if (e.type == s.timerEvent) {
        SDL_FlushEvent(s.timerEvent);
        HostWindow_OnTimer();
        return true;
    }
    uint32_t x, y;
    switch (e.type) {
        case SDL_WINDOWEVENT:
            OnWindowEvent(e.window);
            break;
        case SDL_QUIT:
            HostWindow_OnClose();
            break;  // a signal asked us to end
        case SDL_TEXTINPUT:
            QueueText(e.text.text);
            if (!s.pendingChars.empty()) {
                uint32_t code = s.pendingChars.front();
                s.pendingChars.pop_front();
                HostWindow_OnChar(code);
            }
            break;
        case SDL_KEYDOWN:
            if (uint32_t code = ControlKeyCode(e.key.keysym.sym)) HostWindow_OnChar(code);
            break;
        case SDL_MOUSEBUTTONDOWN:
        case SDL_MOUSEBUTTONUP:
            // Only the left button is tracked.
            if (e.button.button != SDL_BUTTON_LEFT) break;
            Sdl2_ToPixels(e.button.x, e.button.y, &x, &y);
            HostWindow_OnButton(x, y, e.type == SDL_MOUSEBUTTONDOWN);
            break;
        case SDL_MOUSEMOTION:
            Sdl2_ToPixels(e.motion.x, e.motion.y, &x, &y);
            HostWindow_OnPointerMove(x, y);
            break;
        case SDL_DROPFILE:
            HostWindow_OnDrop(e.drop.file);
            SDL_free(e.drop.file);  // ours to free; the window state kept a copy
            break;
        case SDL_DROPTEXT:
            SDL_free(e.drop.file);
            break;
        default:
            break;
    }
    return true;
}

void Sdl2_WaitForInput(uint32_t maxMs) {
    if (!Sdl2_State().pendingChars.empty() || Sdl2_InstanceRequestWaiting()) return;
    SDL_WaitEventTimeout(nullptr, int(maxMs));
}

void Sdl2_TimerStart() {
    Sdl2State& s = Sdl2_State();
    if (!s.timer) s.timer = SDL_AddTimer(kTickMs, OnTimer, nullptr);
}

void Sdl2_TimerStop() {
    Sdl2State& s = Sdl2_State();
    if (s.timer) SDL_RemoveTimer(s.timer);
    s.timer = 0;
}
