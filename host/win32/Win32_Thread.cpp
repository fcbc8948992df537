// Detached threads on Windows, made by CreateThread itself rather than through
// the cross compilers' POSIX thread library (see HostOs_StartThread).
#include "host/Host_Os.h"
#include "host/win32/Win32_Private.h"

namespace {

struct ThreadStart {
    void (*function)(void*);
    void* argument;
};

DWORD WINAPI ThreadMain(LPVOID raw) {
    const ThreadStart start = *static_cast<ThreadStart*>(raw);
    delete static_cast<ThreadStart*>(raw);
    start.function(start.argument);
    return 0;
}

}  // namespace

bool HostOs_StartThread(void (*function)(void* argument), void* argument) {
    auto* start = new ThreadStart{function, argument};
    HANDLE thread = CreateThread(nullptr, 0, ThreadMain, start, 0, nullptr);
    if (!thread) {
        delete start;
        return false;
    }
    CloseHandle(thread);  // detached: nobody joins it
    return true;
}
