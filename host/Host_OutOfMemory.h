// The program's one answer to exhausted memory for an image-sized buffer:
// there is no recovery, whichever layer ran out.
#pragma once

inline constexpr const char* kOutOfMemoryText = "Out of memory\n";

// Shows "Out of memory\n" in the host's plain message box (which also puts it
// on standard error) and ends the process with status 1.
[[noreturn]] void Host_OutOfMemory();
