// The stereo module's parameter rows and the settings they give.
#include "modules/stereo/Stereo_Params.h"

namespace {

constexpr double kPercent = 0.01;

constexpr ModuleParam kRows[] = {
    {"depth", nullptr, ModuleParams_Id("LvS1"), Param_Field<&StereoParams::depth>, 0, 100, ParamExtent::Fixed,
     "Depth Strength", ValueLabelKind::Percent, nullptr, nullptr},
    {"stars", nullptr, ModuleParams_Id("LvS2"), Param_Field<&StereoParams::stars>, 0, 100, ParamExtent::Fixed,
     "Star Stand-Out", ValueLabelKind::Percent, nullptr, nullptr},
};

}  // namespace

std::span<const ModuleParam> Stereo_ParamTable() {
    return kRows;
}

StereoSettings Stereo_Settings(const StereoParams& params) {
    StereoSettings s;
    s.strength = ModuleParams_Position(kRows[0], &params, 0, 0) * kPercent;
    s.standOut = ModuleParams_Position(kRows[1], &params, 0, 0) * kPercent;
    const int32_t preview = params.preview;
    s.preview = preview == int32_t(StereoPreview::kPair)       ? StereoPreview::kPair
                : preview == int32_t(StereoPreview::kAnaglyph) ? StereoPreview::kAnaglyph
                                                               : StereoPreview::kDepth;
    return s;
}
