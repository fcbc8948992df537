// One desktop window of the program per user and display. The first start
// holds a lock and listens for later starts; a later start hands over what it
// was asked to do (raise the window, open a file) and ends. The lock is the
// operating system's, so a crashed run leaves nothing that blocks the next one.
#pragma once

#include <string>

// What a later start asks of the running instance.
struct HostInstanceRequest {
    std::string path;       // absolute path of a file to open, or empty
    std::string startupId;  // the launcher's startup notification id, or empty
};

// Called on the listening thread for each request received; must only queue it.
using HostInstanceRequestFn = void (*)(const HostInstanceRequest& request);

enum HostInstanceClaim {
    kHostInstanceFirst,       // we hold the lock and listen; run normally
    kHostInstanceHandedOver,  // a running instance took the request; end with status 0
    kHostInstanceUnavailable  // no lock could be taken or the holder did not answer; run normally
};

// Platform side (host/posix, host/win32). `folder` holds the lock and the
// socket, named after `name`; an empty folder means the platform's default
// (HostOs_InstanceFolder). As the first instance, `onRequest` is called for
// each later start until HostOs_ReleaseInstance. One claim per process: a new
// first claim replaces the previous one.
HostInstanceClaim HostOs_ClaimInstance(const std::string& folder, const std::string& name,
                                       const HostInstanceRequest& request, HostInstanceRequestFn onRequest);
// Stops listening and gives the lock up (nothing when nothing was claimed).
void HostOs_ReleaseInstance();
// The per-user runtime folder ($XDG_RUNTIME_DIR, else a private folder in the
// temporary folder); empty when none can be trusted.
std::string HostOs_InstanceFolder();
// The name of the display this session shows its windows on ("" when unknown):
// instances on different displays do not meet.
std::string HostOs_DisplayName();
// The launcher's startup notification id or activation token given to this
// process (empty when none): the running window needs it to be let forward.
std::string HostOs_StartupId();
// Once the window has used it: programs we start (a browser, a file dialog)
// must not inherit it.
void HostOs_ForgetStartupId();

// The name under which instances of `program` on this display meet: the
// program and the display, with characters unfit for a file name replaced.
std::string HostInstance_Name(const std::string& program, const std::string& display);
