// Bin's parameter row and presets.
#include "modules/bin/Bin_Params.h"

#include <cmath>

namespace {

constexpr double kScaleStep = 0.0001;

constexpr ModuleParam kRows[] = {
    {"scale", nullptr, ModuleParams_Id("LvS1"), Param_Field<&BinParams::scale>, 0, 10000, ParamExtent::Fixed,
     "Scale", ValueLabelKind::DenoiseScale, nullptr, &Bin_ValueFigures},
};

constexpr ParamPreset kPresets[] = {
    {ModuleParams_Id("Bt25"), ModuleParams_Id("LvS1"), 2500},
    {ModuleParams_Id("Bt35"), ModuleParams_Id("LvS1"), 3538},
    {ModuleParams_Id("Bt50"), ModuleParams_Id("LvS1"), 5000},
    {ModuleParams_Id("Bt71"), ModuleParams_Id("LvS1"), 7071},
};

}  // namespace

std::span<const ModuleParam> Bin_ParamTable() {
    return kRows;
}

std::span<const ParamPreset> Bin_Presets() {
    return kPresets;
}

BinSettings Bin_Settings(const BinParams& params) {
    return {ModuleParams_Position(kRows[0], &params, 0, 0) * kScaleStep};
}

void Bin_ValueFigures(uint32_t position, double figures[3]) {
    const double s = position * kScaleStep;
    figures[0] = position * 0.01;
    figures[1] = 100 / (s * s);
    figures[2] = -2 * std::log2(s);
}
