// The host platform layer: a registry of named drivers through which every
// platform service is reached (Host_Call), the event queues and the main loop.
// Everything above host/ talks to the platform only through this header,
// Host_Threads.h and Host_Os.h.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

constexpr int kHostNameBound = 32;  // names are copied and compared on at most 32 characters

struct HostDriver;
struct HostMethod;
using HostMethodFn = void (*)(HostDriver* driver, HostMethod* method, void* argument);

struct HostMethod {
    char name[kHostNameBound] = {};
    int32_t locked = 0;  // 1 while the method runs: the re-entrancy gate
    HostMethodFn function = nullptr;
};

struct HostDriver {
    char name[kHostNameBound] = {};
    uint8_t active = 0;
    std::vector<std::unique_ptr<HostMethod>> methods;  // in the order they were added
    std::vector<HostDriver*> dependencies;
    uint32_t useCount = 0;  // dependants plus calls of this driver now running
    void* data = nullptr;   // the driver's private state
};

// ---------------------------------------------------------------------------
// Events
// ---------------------------------------------------------------------------

enum AppEventKind : uint32_t {
    kAppEventResized = 1,
    kAppEventInput = 2,
    kAppEventTick = 3,
    kAppEventStart = 6,
    kAppEventCloseRequested = 7,
    // A file was dropped on the window; "Event_TakeDroppedFile" hands out its path.
    kAppEventFileDropped = 8,
};

enum InputDevice : uint32_t { kInputKeyboard = 0, kInputPointer = 1 };

// A fixed-size record copied by value into the ring; unused payload is zero.
//   resized: width, height          tick:  count of collapsed timer ticks
//   input:   device, then keyboard (character code, 1) or pointer (x, y, button down)
struct AppEvent {
    uint32_t kind = 0;
    uint32_t payload[4] = {};
};

using AppEventHandler = int (*)(AppEvent* event);

enum SysEventKind : int64_t {
    kSysEventNone = 0,
    kSysEventBlit = 1,
    kSysEventResized = 2,
    kSysEventClose = 3,
    kSysEventInput = 4,
    kSysEventDrop = 5,  // a file dropped on the window (its path waits in the window state)
};

struct SysInput {
    uint32_t device = 0;
    uint32_t value[3] = {};  // keyboard: code, 1; pointer: x, y, button down
};

struct VideoBlitArgs {
    HostDriver* driver = nullptr;
};

struct VideoResizeArgs {
    uint32_t width = 0;
    uint32_t height = 0;
    HostDriver* driver = nullptr;
};

struct SysEvent {
    int64_t kind = kSysEventNone;
    VideoBlitArgs* blit = nullptr;  // kind 1
    VideoResizeArgs resized;        // kind 2: new client size and the "video" driver
    SysInput input;                 // kind 4
};

constexpr uint32_t kAppQueueSize = 1024;

struct HostState {
    std::vector<std::unique_ptr<HostDriver>> drivers;
    AppEvent appQueue[kAppQueueSize] = {};
    AppEventHandler appHandler = nullptr;
    uint32_t writeIndex = 0;
    uint32_t pendingCount = 0;
    uint32_t pendingTicks = 0;
    uint8_t driversChanged = 0;
    void (*backgroundTask)(void*) = nullptr;
    uint8_t backgroundFinished = 0;
    uint8_t backgroundRunning = 0;
    uint32_t workerCount = 0;
};

// The one host state of the process, or null before Host_Init and after Host_Shutdown.
HostState* Host_GetState();

// ---------------------------------------------------------------------------
// Registry
// ---------------------------------------------------------------------------

HostDriver* Host_DriverCreate(const char* name);
void Host_DriverAddMethod(HostDriver* driver, const HostMethod& method);
// The same for a method given by its name and function.
void Host_DriverAddMethod(HostDriver* driver, const char* name, HostMethodFn function);
void Host_DriverAddDependency(HostDriver* driver, HostDriver* other);
void Host_DriverRemoveDependency(HostDriver* driver, HostDriver* other);
// Walks the dependency list: the first dependency for a null iterator, then the
// one after the iterator; null at the end.
HostDriver* Host_DriverGetDependency(HostDriver* driver, HostDriver* iterator);
HostDriver* Host_FindDriver(const char* name);
// Copies a driver or method name with the registry's bound of 32 characters.
void Host_CopyName(char (&to)[kHostNameBound], const char* from);

// Calls method `method` of the driver named `pattern` ("*" for every driver).
// Results come back through the caller-owned argument block.
void Host_Call(const char* pattern, const char* method, void* argument);

void Host_DriverResume(HostDriver* driver);
void Host_DriverSuspend(HostDriver* driver);
int Host_DriverDestroy(HostDriver* driver);  // 0 freed, 1 null driver, 2 still in use
void Host_DriversUnloadAll();

// Prints the message (no newline added) on standard output and ends with status 1.
[[noreturn]] void Host_Fatal(const char* message);

inline constexpr const char* kFatalLockedMethod = "Attempt to call locked method (reentrant code?)";
inline constexpr const char* kFatalMissingDependency = "Attempting to remove non-existent dependency";
inline constexpr const char* kFatalUnload = "Not all drivers succesfully unloaded";

// Creates an empty host state (the registry without drivers). Host_Init does
// this and registers the program's drivers; tests use it to build registries
// of their own.
HostState* Host_CreateState();
void Host_DestroyState();

// ---------------------------------------------------------------------------
// Start-up, the main loop and shutdown
// ---------------------------------------------------------------------------

// Chooses the platform backend by name ("sdl2", "headless"); null or empty takes
// PELLUCIDA_HOST from the environment, then the default (the desktop backend).
// Returns false, after saying why on standard error, for an unknown name.
bool Host_SelectBackend(const char* name);
const char* Host_GetBackendName();
std::vector<std::string> Host_ListBackends();

// Creates the main window (once, before Host_Init). Ends the process, as the
// platform rules say, when the window cannot be created.
void Host_CreateMainWindow();
// Closes the main window after Host_Shutdown.
void Host_DestroyMainWindow();

// Creates the host state, registers and resumes the drivers, installs the
// handler and queues start, then resized. Returns false when no host could be made.
bool Host_Init(AppEventHandler handler);

// One pass of the main loop; returns non-zero once the handler asked to stop.
int Host_LoopPass();
// Runs passes until the handler asks to stop.
void Host_MainLoop();

// Unloads every driver in dependency order and frees the host state.
void Host_Shutdown();
