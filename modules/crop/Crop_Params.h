// Crop's parameters: the rectangle's corners on LvS1..LvS4, and the aspect
// presets of the buttons BtP0..BtP7.
#pragma once

#include "modules/common/ModuleParams.h"

#include <cstdint>
#include <span>
#include <string>

inline constexpr const char* kCropTitle = "Crop";

struct CropRect {
    int32_t x0 = 0, y0 = 0, x1 = -1, y1 = -1;  // -1 stands for the last column or row
};

enum class AspectMode : uint8_t { Shrink, Grow };

struct AspectPreset {
    uint32_t buttonId;
    float ratio;
    AspectMode mode;
};
std::span<const AspectPreset> Crop_AspectPresets();

std::span<const ModuleParam> Crop_ParamTable();
// Corners with -1 resolved and clamped to the setters' ranges.
CropRect Crop_Resolve(const CropRect& rect, int32_t width, int32_t height);
std::string Crop_LogBlock(const CropRect& rect, int32_t width, int32_t height);
