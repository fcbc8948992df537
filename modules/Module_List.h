// Every processing module, one row each, in the order the help lists them.
// Adding a module is its folder under modules/ and its row in Module_List.cpp.
#pragma once

#include "modules/Module.h"

#include <span>
#include <string_view>

std::span<const ModuleDef* const> Module_List();
// The module a main-form button enters or runs; null when none.
const ModuleDef* Module_FindByButton(uint32_t buttonId);
// The module whose log title is `name` (replaying a processing log); null when none.
const ModuleDef* Module_FindByName(std::string_view name);
