// The table of widget kinds: one explicit row per kind with its handler and
// whether it takes the pointer, so that what exists is read in one place. The
// toolkit is created with it (ui/Toolkit_Create.h) and dispatches through it.
#pragma once

#include "ui/Widget.h"

#include <span>

std::span<const WidgetKindRow> WidgetKinds_Table();
