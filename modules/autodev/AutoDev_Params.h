// AutoDev's parameters: the level setters of its form as positions, the rows
// that describe them, and the kernel settings they stand for.
#pragma once

#include "modules/autodev/AutoDev_Kernel.h"
#include "modules/common/ModuleParams.h"

#include <cstdint>
#include <span>

struct AutoDevParams {
    int32_t blur = 0;      // LvS1, 0..490: blur half-width p1 = v * 0.05 + 0.5 ("off" at 0)
    int32_t outside = 15;  // LvS2, 0..100: weight outside the RoI, p4 = v * 0.01
    int32_t roiX0 = 0;     // LvS3..LvS6: RoI corners
    int32_t roiY0 = 0;
    int32_t roiX1 = kParamLast;
    int32_t roiY1 = kParamLast;
    int32_t curve = 100;  // LvS7, 0..1000: p2 = v * 0.01
    int32_t tone = 50;    // LvS8, 0..100: p3 = v * 0.01
    // No setter: whether the image is monochrome, tested once when the module
    // is entered (1 or 0); -1 tests the image a run is given (the command line
    // runs once). A quick preview's binned copy must not be tested: averaging
    // can bring scattered colour below the threshold.
    int32_t monochrome = -1;
};

// The monochrome flag the parameters carry, or the image's own when unset.
bool AutoDev_ParamsMonochrome(const AutoDevParams& params, const ImageBuffer* image);

std::span<const ModuleParam> AutoDev_ParamTable();

// The kernel's settings for an image of this size; `monochrome` is the image's
// (AutoDev_IsMonochrome), worked out once when the module is entered.
AutoDevSettings AutoDev_Settings(const AutoDevParams& params, int32_t width, int32_t height, bool monochrome);
