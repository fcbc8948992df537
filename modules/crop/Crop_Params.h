// Crop's parameters: the rectangle's corners on LvS1..LvS4, and the aspect
// presets of the buttons BtP0..BtP7.
#pragma once

#include "modules/common/ModuleParams.h"
#include "modules/crop/Crop_Kernel.h"

#include <cstdint>
#include <span>

struct CropParams {
    int32_t x0 = 0, y0 = 0;                    // LvS1, LvS2
    int32_t x1 = kParamLast, y1 = kParamLast;  // LvS3, LvS4
};

std::span<const ModuleParam> Crop_ParamTable();

struct AspectPreset {
    uint32_t buttonId;
    float ratio;
    AspectMode mode;
};
std::span<const AspectPreset> Crop_AspectPresets();

// The corners as the setters hold them for an image of this size.
CropSettings Crop_Settings(const CropParams& params, int32_t width, int32_t height);
