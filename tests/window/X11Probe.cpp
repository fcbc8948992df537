// A small X11 client for the desktop-window tests: finds the program's window
// by title, reads its pixels back and asks it to close the way a window
// manager does (WM_DELETE_WINDOW).
//
//   x11probe wait TITLE SECONDS        wait until the window is mapped
//   x11probe close TITLE               send WM_DELETE_WINDOW
//   x11probe size TITLE                print the window's size
//   x11probe compare TITLE PNG TOL     the window matches the picture, each channel within TOL
//   x11probe resources TEXT            set the X resource database (RESOURCE_MANAGER)
//   x11probe wm                        a window manager that only maps and maximises, until killed
#include <lodepng.h>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

Window FindByTitle(Display* display, Window root, const char* title) {
    char* name = nullptr;
    if (XFetchName(display, root, &name) && name) {
        bool match = std::strcmp(name, title) == 0;
        XFree(name);
        if (match) {
            XWindowAttributes attributes;
            if (XGetWindowAttributes(display, root, &attributes) && attributes.map_state == IsViewable)
                return root;
        }
    }
    Window rootReturn, parent, *children = nullptr;
    unsigned count = 0;
    if (!XQueryTree(display, root, &rootReturn, &parent, &children, &count)) return 0;
    Window found = 0;
    for (unsigned i = 0; i < count && !found; ++i) found = FindByTitle(display, children[i], title);
    if (children) XFree(children);
    return found;
}

uint32_t PixelAt(XImage* image, int x, int y) {
    unsigned long p = XGetPixel(image, x, y);
    uint32_t r = uint32_t((p & image->red_mask) >> __builtin_ctzl(image->red_mask));
    uint32_t g = uint32_t((p & image->green_mask) >> __builtin_ctzl(image->green_mask));
    uint32_t b = uint32_t((p & image->blue_mask) >> __builtin_ctzl(image->blue_mask));
    return r << 16 | g << 8 | b;
}

// The window against a picture of the same size (the headless rendering of
// the same screen). On failure the window's contents are written beside the
// picture's name with ".window.png" appended, for a look.
int Compare(Display* display, Window window, const char* path, int tolerance) {
    std::vector<uint8_t> expected;
    unsigned w = 0, h = 0;
    if (lodepng::decode(expected, w, h, path, LCT_RGB, 8) != 0) {
        std::fprintf(stderr, "x11probe: cannot read %s\n", path);
        return 1;
    }
    XWindowAttributes a;
    XGetWindowAttributes(display, window, &a);
    if (unsigned(a.width) != w || unsigned(a.height) != h) {
        std::printf("window %dx%d, picture %ux%u: sizes differ\n", a.width, a.height, w, h);
        return 1;
    }
    XImage* image = XGetImage(display, window, 0, 0, a.width, a.height, AllPlanes, ZPixmap);
    if (!image) {
        std::fprintf(stderr, "x11probe: cannot read the window back\n");
        return 1;
    }
    std::vector<uint8_t> actual(size_t(w) * h * 3);
    long wrong = 0;
    int firstX = -1, firstY = -1;
    for (unsigned y = 0; y < h; ++y)
        for (unsigned x = 0; x < w; ++x) {
            const uint32_t p = PixelAt(image, int(x), int(y));
            uint8_t* o = &actual[(size_t(y) * w + x) * 3];
            o[0] = uint8_t(p >> 16), o[1] = uint8_t(p >> 8), o[2] = uint8_t(p);
            const uint8_t* e = &expected[(size_t(y) * w + x) * 3];
            bool bad = false;
            for (int c = 0; c < 3; ++c) bad |= std::abs(int(o[c]) - int(e[c])) > tolerance;
            if (bad && wrong++ == 0) firstX = int(x), firstY = int(y);
        }
    XDestroyImage(image);
    std::printf("window %dx%d: %ld pixels differ from %s by more than %d", a.width, a.height, wrong, path,
                tolerance);
    if (wrong) std::printf(" (first at %d,%d)", firstX, firstY);
    std::printf("\n");
    if (wrong) lodepng::encode(std::string(path) + ".window.png", actual, w, h, LCT_RGB);
    return wrong == 0 ? 0 : 1;
}

// The least a window manager does for a program that asks to be maximised:
// map what asks to be mapped, grant configure requests, and answer the
// _NET_WM_STATE maximise message by covering the screen.
int WindowManager(Display* display, Window root) {
    XSelectInput(display, root, SubstructureRedirectMask | SubstructureNotifyMask);
    XSync(display, False);
    const Atom state = XInternAtom(display, "_NET_WM_STATE", False);
    const Atom maxV = XInternAtom(display, "_NET_WM_STATE_MAXIMIZED_VERT", False);
    const Atom maxH = XInternAtom(display, "_NET_WM_STATE_MAXIMIZED_HORZ", False);
    XWindowAttributes screen;
    XGetWindowAttributes(display, root, &screen);
    std::printf("wm ready\n");
    std::fflush(stdout);
    for (;;) {
        XEvent e;
        XNextEvent(display, &e);
        if (e.type == MapRequest) {
            XMapWindow(display, e.xmaprequest.window);
        } else if (e.type == ConfigureRequest) {
            XWindowChanges changes{};
            changes.x = e.xconfigurerequest.x;
            changes.y = e.xconfigurerequest.y;
            changes.width = e.xconfigurerequest.width;
            changes.height = e.xconfigurerequest.height;
            XConfigureWindow(display, e.xconfigurerequest.window,
                             unsigned(e.xconfigurerequest.value_mask) & (CWX | CWY | CWWidth | CWHeight),
                             &changes);
        } else if (e.type == ClientMessage && e.xclient.message_type == state && e.xclient.data.l[0] == 1 &&
                   (Atom(e.xclient.data.l[1]) == maxV || Atom(e.xclient.data.l[1]) == maxH)) {
            const Atom both[2] = {maxV, maxH};
            XChangeProperty(display, e.xclient.window, state, XA_ATOM, 32, PropModeReplace,
                            reinterpret_cast<const unsigned char*>(both), 2);
            XMoveResizeWindow(display, e.xclient.window, 0, 0, unsigned(screen.width),
                              unsigned(screen.height));
        }
        XFlush(display);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2 || (argc < 3 && std::strcmp(argv[1], "wm") != 0)) {
        std::fprintf(stderr, "usage: x11probe wait|close|size|compare|resources|wm TITLE [args]\n");
        return 2;
    }
    Display* display = XOpenDisplay(nullptr);
    if (!display) {
        std::fprintf(stderr, "x11probe: no X display\n");
        return 2;
    }
    std::string command = argv[1];
    if (command == "wm") return WindowManager(display, DefaultRootWindow(display));
    if (command == "resources") {
        XChangeProperty(display, DefaultRootWindow(display), XA_RESOURCE_MANAGER, XA_STRING, 8,
                        PropModeReplace, reinterpret_cast<const unsigned char*>(argv[2]),
                        int(std::strlen(argv[2])));
        XCloseDisplay(display);
        return 0;
    }
    const char* title = argv[2];
    Window root = DefaultRootWindow(display);

    if (command == "wait") {
        const double seconds = argc > 3 ? std::atof(argv[3]) : 10;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
        while (!FindByTitle(display, root, title) && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    Window window = FindByTitle(display, root, title);
    if (!window) {
        std::fprintf(stderr, "x11probe: no window \"%s\"\n", title);
        XCloseDisplay(display);
        return 1;
    }
    int rc = command == "wait" ? 0 : 2;
    if (command == "compare" && argc == 5) {
        rc = Compare(display, window, argv[3], std::atoi(argv[4]));
    } else if (command == "close") {  // as a window manager asks
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = window;
        event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
        event.xclient.format = 32;
        event.xclient.data.l[0] = long(XInternAtom(display, "WM_DELETE_WINDOW", False));
        event.xclient.data.l[1] = CurrentTime;
        XSendEvent(display, window, False, NoEventMask, &event);
        XFlush(display);
        rc = 0;
    } else if (command == "size") {
        XWindowAttributes a;
        XGetWindowAttributes(display, window, &a);
        std::printf("%dx%d\n", a.width, a.height);
        rc = 0;
    }
    XCloseDisplay(display);
    return rc;
}
