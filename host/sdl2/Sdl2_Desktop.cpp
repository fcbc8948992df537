// SDL2 backend, what SDL2 does not do for us on X11: the interface scale (SDL
// reports none there) and activating the window with the launcher's startup
// id, so that window managers that refuse focus stealing still let it
// forward. Xlib is used only when it was found at build time; without it the
// scale comes from the screen's physical density and activation is SDL's.
#include "host/Host_DisplayScale.h"
#include "host/sdl2/Sdl2_Private.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

#if PELLUCIDA_HAVE_X11
#include <SDL_syswm.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#endif

namespace {

#if PELLUCIDA_HAVE_X11
struct X11Window {
    Display* display = nullptr;
    Window window = 0;
};

X11Window ToX11(SDL_Window* window) {
    SDL_SysWMinfo info;
    SDL_VERSION(&info.version);
    if (!window || !SDL_GetWindowWMInfo(window, &info) || info.subsystem != SDL_SYSWM_X11) return {};
    return {info.info.x11.display, info.info.x11.window};
}

// Startup ids end in "_TIME" and the X server time of the user's action; a
// window manager weighs an activation by that time.
Time StartupTime(const std::string& id) {
    const size_t at = id.rfind("_TIME");
    if (at == std::string::npos) return CurrentTime;
    char* end = nullptr;
    const unsigned long time = std::strtoul(id.c_str() + at + 5, &end, 10);
    return *end == '\0' ? Time(time) : CurrentTime;
}

// The startup-notification "remove" message ends the launcher's busy feedback;
// it travels to the root window in 20-byte pieces.
void SendStartupRemove(const X11Window& x, const std::string& id) {
    std::string message = "remove: ID=\"";
    for (char c : id) {
        if (c == '"' || c == '\\') message += '\\';
        message += c;
    }
    message += '"';
    message += '\0';
    const Atom begin = XInternAtom(x.display, "_NET_STARTUP_INFO_BEGIN", False);
    const Atom more = XInternAtom(x.display, "_NET_STARTUP_INFO", False);
    for (size_t at = 0; at < message.size(); at += 20) {
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = x.window;
        event.xclient.message_type = at == 0 ? begin : more;
        event.xclient.format = 8;
        std::memcpy(event.xclient.data.b, message.data() + at, std::min<size_t>(20, message.size() - at));
        XSendEvent(x.display, DefaultRootWindow(x.display), False, PropertyChangeMask, &event);
    }
}
#endif

}  // namespace

void Sdl2_Activate(const std::string& startupId) {
#if PELLUCIDA_HAVE_X11
    const X11Window x = ToX11(Sdl2_State().window);
    if (!x.display || startupId.empty()) return;
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = x.window;
    event.xclient.message_type = XInternAtom(x.display, "_NET_ACTIVE_WINDOW", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = 1;  // asked for by an application, not a pager
    event.xclient.data.l[1] = long(StartupTime(startupId));
    XSendEvent(x.display, DefaultRootWindow(x.display), False,
               SubstructureRedirectMask | SubstructureNotifyMask, &event);
    SendStartupRemove(x, startupId);
    XFlush(x.display);
#else
    (void)startupId;
#endif
}

double Sdl2_DisplayScale() {
    SDL_Window* window = Sdl2_State().window;
    if (!window) return 1.0;
    // Where SDL knows the scale (Wayland, macOS) the framebuffer is already
    // larger than the window in points.
    int points = 0, pixels = 0, unused = 0;
    SDL_GetWindowSize(window, &points, &unused);
    if (Sdl2_State().renderer) SDL_GetRendererOutputSize(Sdl2_State().renderer, &pixels, &unused);
    if (points > 0 && pixels > points) return double(pixels) / points;

    const char* driver = SDL_GetCurrentVideoDriver();
    if (!driver || std::strcmp(driver, "x11") != 0) return 1.0;
    double xftDpi = 0;
#if PELLUCIDA_HAVE_X11
    if (const X11Window x = ToX11(window); x.display)
        if (const char* resources = XResourceManagerString(x.display)) xftDpi = HostDisplay_XftDpi(resources);
#endif
    float screenDpi = 0;
    if (SDL_GetDisplayDPI(SDL_GetWindowDisplayIndex(window), &screenDpi, nullptr, nullptr) != 0)
        screenDpi = 0;
    return HostDisplay_ChooseScale(std::getenv("GDK_SCALE"), xftDpi, screenDpi);
}
