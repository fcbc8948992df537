// The start and end of every windowed program of ours: the host options they
// all take, and the run from backend choice to the unloaded drivers.
#pragma once

#include "host/Host.h"

#include <string>

struct HostOptions {
    std::string host;    // --host=NAME: the platform backend (PELLUCIDA_HOST otherwise)
    std::string script;  // --script=FILE: input script for the headless backend
};

inline constexpr const char* kHostOptionsHelp =
    "  --host=NAME    platform backend (sdl2 or headless; PELLUCIDA_HOST also sets it)\n"
    "  --script=FILE  input script for the headless backend\n";

// Takes `arg` into `options` when it is a host option; false otherwise.
bool Host_ParseOption(const char* arg, HostOptions* options);

// One desktop window per user and display: when an instance of `program`
// already runs there, hands it `openPath` (empty for none) with a request to
// come forward and returns true; the caller then ends with status 0.
// Otherwise this process becomes the one later starts hand over to (until
// Host_Run returns) and the answer is false. Backends without a desktop window
// (headless) never take part.
bool Host_HandOverToRunningInstance(const char* program, const HostOptions& options,
                                    const std::string& openPath);

// Chooses the backend, loads the script, creates the main window, runs the
// main loop with `handler` until it asks to stop, and unloads the drivers.
// Returns the process status: 0, 1 when no host could be made, 2 for options
// that do not fit (said on standard error, prefixed with `program`).
int Host_Run(const char* program, const HostOptions& options, AppEventHandler handler);
