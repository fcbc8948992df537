// The stereo module's parameters: two level setters (how deep the scene is,
// how far the stars come forward) and the preview the form shows, which its
// buttons choose.
#pragma once

#include "modules/common/ModuleParams.h"
#include "modules/stereo/Stereo_Kernel.h"

#include <cstdint>
#include <span>

struct StereoParams {
    int32_t depth = 50;  // LvS1, 0..100: the parallax at the front, in per cent of its maximum
    int32_t stars = 60;  // LvS2, 0..100: how far the stars stand out of their surroundings
    int32_t preview = int32_t(StereoPreview::kDepth);  // not a setter: the form's preview buttons
};

std::span<const ModuleParam> Stereo_ParamTable();
StereoSettings Stereo_Settings(const StereoParams& params);
