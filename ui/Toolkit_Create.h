// Creating the toolkit context with the program's widget kinds.
#pragma once

#include "ui/Toolkit.h"

#include <memory>

// A context without archive, screen or font: the root widget and the built-in
// entities that need no screen. Toolkit_Create adds the rest.
std::unique_ptr<Toolkit> Toolkit_CreateBare();

// The start-up sequence: opens the archive (ending the process when it is
// missing), measures the screen, defines the system entities and the metrics
// and loads the font.
std::unique_ptr<Toolkit> Toolkit_Create();
// The same sequence with an archive opened by the caller (tools, tests).
std::unique_ptr<Toolkit> Toolkit_CreateWithArchive(std::unique_ptr<ResourceArchive> archive);
