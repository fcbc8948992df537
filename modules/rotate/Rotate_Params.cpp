// Rotate's parameter table.
#include "modules/rotate/Rotate_Params.h"

namespace {

constexpr ModuleParam kTable[] = {
    {"angle", ModuleParams_Id("LvS1"), 0, 3599, ParamExtent::Fixed, 0, "Angle", ValueLabelKind::Tenths,
     nullptr, nullptr},
};

constexpr RotatePreset kPresets[] = {
    {ModuleParams_Id("Bt90"), 900},
    {ModuleParams_Id("Bt18"), 1800},
    {ModuleParams_Id("Bt27"), 2700},
};

}  // namespace

std::span<const RotatePreset> Rotate_Presets() {
    return kPresets;
}
std::span<const ModuleParam> Rotate_ParamTable() {
    return kTable;
}
double Rotate_Degrees(const RotateParams& params) {
    return params.angle * kRotateAngleStep;
}

std::string Rotate_LogBlock(const RotateParams& params) {
    const int32_t values[1] = {ModuleParams_Clamp(kTable[0], params.angle, 0, 0)};
    return Log_ParameterBlock(kRotateTitle, kTable, values, 0, 0);
}
