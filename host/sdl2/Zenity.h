// File dialogs through zenity, for desktops without the file chooser portal.
// The argument vector is built apart from running it, so that the flags each
// zenity version takes can be checked without a display.
#pragma once

#include "host/sdl2/DesktopDialog.h"

#include <string>
#include <string_view>
#include <vector>

struct ZenityVersion {
    int major = 0;  // 0: unknown (zenity could not tell, e.g. without a display)
    int minor = 0;
};

// Reads the first line of `zenity --version` ("3.44.0", "4.0.1").
ZenityVersion Zenity_ParseVersion(std::string_view text);

// The arguments after the program name. Never --confirm-overwrite: the program
// asks its own overwrite question (and zenity 3.91 and later refuse the flag).
std::vector<std::string> Zenity_Arguments(const ZenityVersion& version, const DesktopDialogRequest& request);

// Runs zenity from PATH, without a shell. kUnavailable when it cannot be started.
DesktopDialogResult Zenity_FileDialog(const DesktopDialogRequest& request, std::string* chosen);
