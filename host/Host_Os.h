// Operating-system facts the program needs outside the drivers: its own folder
// and a writable folder for its state.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

// The folder of the running executable, with a trailing separator.
std::string Host_GetProgramDir();

// The folder for the tracking store and the processing log: the program's own
// folder when it is writable (a portable install), otherwise the user's state
// folder ($XDG_STATE_HOME/pellucida, by default ~/.local/state/pellucida;
// %LOCALAPPDATA%\Pellucida on Windows), created on first use. With a trailing
// separator. PELLUCIDA_STATE_DIR overrides both (tests, batch runs).
std::string Host_GetDataDir();

// Tells the system that a freshly allocated, still untouched block of several
// megabytes will be used whole (image planes), so that it may be backed by large
// pages: first touch then costs a fraction of the page faults. Harmless when
// the system cannot do it.
void HostOs_AdviseLargeBlock(void* block, size_t bytes);

// The machine's physical memory in bytes (0 when it cannot be told).
size_t HostOs_PhysicalMemoryBytes();

// The path separator of the platform.
char Host_PathSeparator();

// Creates the file `path` for writing in binary, failing when it already
// exists (a temporary of another writer must be neither reused nor
// truncated). Null on failure.
std::FILE* HostOs_CreateNewFile(const char* path);

// Asks the desktop to open a web link; a failure is not reported.
void HostOs_ShowURL(const char* url);

// An exclusive lock on the file `path` (created when missing) that lasts until
// HostOs_UnlockFile or the end of the process, however it ends: the system
// lets go of it for a process that crashed or was killed. A handle, or -1 when
// another holder has it or the file cannot be opened. Two handles of one
// process on one file exclude each other too.
int64_t HostOs_LockFile(const char* path);
void HostOs_UnlockFile(int64_t handle);

// Starts a detached thread that runs function(argument); false when the system
// could not create one. On Windows the system's own call makes it: the thread
// library of the cross compilers, under wine, now and then started a thread
// that ran with a null argument or died before its first line.
bool HostOs_StartThread(void (*function)(void* argument), void* argument);
