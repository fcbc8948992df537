// Rotate's parameter: the angle on LvS1 in tenths of a degree, and its presets.
#pragma once

#include "modules/common/ModuleParams.h"
#include "modules/rotate/Rotate_Kernel.h"

#include <cstdint>
#include <span>

struct RotateParams {
    int32_t angle = 0;  // LvS1, 0..3599: theta = v * 0.1 degrees
};

std::span<const ModuleParam> Rotate_ParamTable();
// Bt90, Bt18, Bt27.
std::span<const ParamPreset> Rotate_Presets();
RotateSettings Rotate_Settings(const RotateParams& params);
