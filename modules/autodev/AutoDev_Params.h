// AutoDev's parameters: the level setters of its form, as positions, and the
// table that describes them (range, default, log label, value text).
#pragma once

#include "modules/common/ModuleParams.h"

#include <cstdint>
#include <span>
#include <string>

inline constexpr const char* kAutoDevTitle = "AutoDev";

struct AutoDevParams {
    int32_t blur = 0;      // LvS1, 0..490: blur half-width p1 = v * 0.05 + 0.5 ("off" at 0)
    int32_t outside = 15;  // LvS2, 0..100: weight outside the RoI, p4 = v * 0.01
    int32_t roiX0 = 0;     // LvS3..LvS6: RoI corners; -1 stands for the last column or row
    int32_t roiY0 = 0;
    int32_t roiX1 = -1;
    int32_t roiY1 = -1;
    int32_t curve = 100;  // LvS7, 0..1000: p2 = v * 0.01
    int32_t tone = 50;    // LvS8, 0..100: p3 = v * 0.01
};

// Rows in the order of the fields above.
std::span<const ModuleParam> AutoDev_ParamTable();

// The positions in table order, with -1 corners resolved and every value
// clamped to its setter's range for an image of this size.
void AutoDev_ParamValues(const AutoDevParams& params, int32_t width, int32_t height, int32_t values[8]);
AutoDevParams AutoDev_ParamsFromValues(const int32_t values[8]);

std::string AutoDev_LogBlock(const AutoDevParams& params, int32_t width, int32_t height);
