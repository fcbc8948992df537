// Rotate's parameter row and presets.
#include "modules/rotate/Rotate_Params.h"

namespace {

constexpr double kAngleStep = 0.1;

constexpr ModuleParam kRows[] = {
    {"angle", nullptr, ModuleParams_Id("LvS1"), Param_Field<&RotateParams::angle>, 0, 3599,
     ParamExtent::Fixed, "Angle", ValueLabelKind::Tenths, nullptr, nullptr},
};

constexpr ParamPreset kPresets[] = {
    {ModuleParams_Id("Bt90"), ModuleParams_Id("LvS1"), 900},
    {ModuleParams_Id("Bt18"), ModuleParams_Id("LvS1"), 1800},
    {ModuleParams_Id("Bt27"), ModuleParams_Id("LvS1"), 2700},
};

}  // namespace

std::span<const ModuleParam> Rotate_ParamTable() {
    return kRows;
}

std::span<const ParamPreset> Rotate_Presets() {
    return kPresets;
}

RotateSettings Rotate_Settings(const RotateParams& params) {
    return {ModuleParams_Position(kRows[0], &params, 0, 0) * kAngleStep};
}
