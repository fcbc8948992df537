// Opening the program's own resource archive at start-up.
#pragma once

#include "ui/archive/Resources_Archive.h"

#include <memory>
#include <string>

// Shown when the archive cannot be opened; the wording is the program's own.
inline constexpr const char* kResourcesMissingMessage =
    "The application could not start because it could not find the 'resources' file, or the 'resources' "
    "file is write protected. Please make sure it is available in the same folder as the application "
    "executable and that it the folder and the 'resources' file has read/write permissions set.";

inline constexpr const char* kResourcesFileName = "resources";

// The archive file beside the executable.
std::string Resources_DefaultPath();

// Opens the archive beside the executable. When it cannot be opened the
// start-up message is shown and the process ends with status 0.
std::unique_ptr<ResourceArchive> Resources_Open();

// Opens the archive at `path`; *code receives the result of adding the volume.
// Returns null on failure.
std::unique_ptr<ResourceArchive> Resources_OpenPath(const char* path, int* code);
