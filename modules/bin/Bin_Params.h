// Bin's parameter: the scale on LvS1 in steps of 0.0001, and its presets.
#pragma once

#include "modules/common/ModuleParams.h"

#include <cstdint>
#include <span>
#include <string>

inline constexpr const char* kBinTitle = "Bin";
inline constexpr double kBinScaleStep = 0.0001;

struct BinParams {
    int32_t scale = 5000;  // LvS1, 0..10000: s = v * 0.0001
};

struct BinPreset {
    uint32_t buttonId;
    int32_t scale;
};
// Bt25, Bt35 (deliberately 3538, not 3536), Bt50, Bt71.
std::span<const BinPreset> Bin_Presets();

std::span<const ModuleParam> Bin_ParamTable();
double Bin_Scale(const BinParams& params);
// The three figures of the value text: scale in per cent, noise reduction in
// per cent (100 / s^2) and the bit gain (-2 * log2(s)).
void Bin_ValueFigures(uint32_t position, double figures[3]);
std::string Bin_LogBlock(const BinParams& params);
