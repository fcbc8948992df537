// File dialogs through the XDG desktop portal (org.freedesktop.portal.FileChooser
// on the session bus): the desktop's own dialog, also inside a sandbox.
#pragma once

#include "host/sdl2/DesktopDialog.h"

#include <optional>
#include <string>
#include <string_view>

// Shows the dialog and waits for its answer. kUnavailable when there is no
// session bus or no portal answers the call; kCanceled also when the portal or
// the bus goes away before it answers.
DesktopDialogResult Portal_FileDialog(const DesktopDialogRequest& request, std::string* chosen);

// The object path on which the portal answers a request with `token`, made by
// the connection with the unique name `uniqueName` (":1.42").
std::string Portal_RequestPath(std::string_view uniqueName, std::string_view token);

// The local path of a "file://" URI, percent-escapes decoded; nothing for any
// other URI or a malformed escape.
std::optional<std::string> Portal_PathFromUri(std::string_view uri);
