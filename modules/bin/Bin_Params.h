// Bin's parameter: the scale on LvS1 in steps of 0.0001, and its presets.
#pragma once

#include "modules/bin/Bin_Kernel.h"
#include "modules/common/ModuleParams.h"

#include <cstdint>
#include <span>

struct BinParams {
    int32_t scale = 5000;  // LvS1, 0..10000: s = v * 0.0001
};

std::span<const ModuleParam> Bin_ParamTable();
// Bt25, Bt35 (deliberately 3538, not 3536), Bt50, Bt71.
std::span<const ParamPreset> Bin_Presets();
BinSettings Bin_Settings(const BinParams& params);
// The three figures of the value text: scale in per cent, noise reduction in
// per cent (100 / s^2) and the bit gain (-2 * log2(s)).
void Bin_ValueFigures(uint32_t position, double figures[3]);
