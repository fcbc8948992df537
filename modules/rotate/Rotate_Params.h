// Rotate's parameter: the angle on LvS1 in tenths of a degree, and its presets.
#pragma once

#include "modules/common/ModuleParams.h"

#include <cstdint>
#include <span>
#include <string>

inline constexpr const char* kRotateTitle = "Rotate";
inline constexpr double kRotateAngleStep = 0.1;

struct RotateParams {
    int32_t angle = 0;  // LvS1, 0..3599: theta = v * 0.1 degrees
};

struct RotatePreset {
    uint32_t buttonId;
    int32_t angle;
};
// Bt90, Bt18, Bt27.
std::span<const RotatePreset> Rotate_Presets();

std::span<const ModuleParam> Rotate_ParamTable();
double Rotate_Degrees(const RotateParams& params);
std::string Rotate_LogBlock(const RotateParams& params);
