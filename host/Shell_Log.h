// The processing log, "Pellucida.log": every load, save, dataset answer and
// kept module step is appended to it. The file is opened, written and closed
// on every call, so the log survives a crash.
#pragma once

#include <string>

inline constexpr const char* kShellLogFileName = "Pellucida.log";

// Appends the text as it is; a null text writes nothing.
void Shell_Log(const char* text);
void Shell_Logf(const char* format, ...) __attribute__((format(printf, 1, 2)));

// The log file's path: in the program's folder when it is writable, otherwise
// in the user's state folder.
std::string Shell_LogPath();
