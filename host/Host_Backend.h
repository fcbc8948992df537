// What a platform backend supplies behind the host's drivers. The drivers'
// methods (Video_*, Event_*, FileDialog_*) are written once, in host/, against
// this table; a backend (host/sdl2, host/headless, host/win32) fills it and
// turns its native messages into calls of the shared window procedure
// (Host_Window.h).
#pragma once

#include <cstdint>
#include <string>

struct HostInstanceRequest;

enum HostCursor { kHostCursorArrow = 0, kHostCursorWait = 1 };

// The "video" driver's private data.
struct VideoState {
    uint32_t* pixels = nullptr;  // first pixel of the framebuffer
    uint32_t width = 0;          // the size asked for
    uint32_t height = 0;
    uint32_t pixelsPerRow = 0;  // width rounded up to a multiple of 4
    uint32_t rows = 0;          // height rounded up to a multiple of 4
    void* platform = nullptr;   // the backend's framebuffer object
};

struct HostBackend {
    const char* name;
    const char* description;

    // The main window: created once by the main routine; a failure ends the
    // process with the platform messages ("Could not create window\n", ...).
    void (*CreateMainWindow)();
    void (*DestroyMainWindow)();

    // Framebuffer storage of pixelsPerRow x rows 32-bit pixels. Returns false,
    // leaving pixels null, when there is no window to attach it to.
    bool (*FramebufferCreate)(VideoState* video);
    void (*FramebufferDestroy)(VideoState* video);
    // Copies width x height pixels of the framebuffer to the window at (0, 0).
    void (*Present)(VideoState* video);
    void (*SetCursor)(HostCursor cursor);

    // Message pump: is any message waiting; remove one and run the window
    // procedure on it (false when none waited); sleep until a message arrives
    // or maxMs pass.
    bool (*MessagePending)();
    bool (*DispatchOneMessage)();
    void (*WaitForInput)(uint32_t maxMs);

    // The 100 ms tick timer; each period posts one timer message.
    void (*TimerStart)();
    void (*TimerStop)();

    void (*ShowMessage)(const char* caption, const char* text);

    // Shows an open or save dialog starting at `current`; true with the chosen
    // path, false when the user dismissed it.
    bool (*FileDialog)(bool save, const std::string& current, std::string* chosen);

    // A later start of the program asked this one to come forward (and perhaps
    // open a file). Runs on the listening thread: it only queues the request
    // and wakes the message pump. Null for a backend that takes no part in
    // the single-instance rule.
    void (*InstanceRequested)(const HostInstanceRequest& request);

    // The user interface scale the desktop asks for: 1 for ordinary screens, 2
    // for a 4K screen at twice the density. Read once the window exists.
    double (*DisplayScale)();
};

// The backend chosen by Host_SelectBackend (the default one if none was chosen).
const HostBackend* HostBackend_Current();

// Host_ShowMessage's path: standard error, then the backend's box.
void HostBackend_ShowMessage(const char* caption, const char* text);

// The backends built into this program (host/Host_Backends.cpp).
extern const HostBackend kHeadlessBackend;
extern const HostBackend kSdl2Backend;
extern const HostBackend kWin32Backend;
