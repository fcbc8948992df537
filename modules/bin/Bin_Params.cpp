// Bin's parameter table.
#include "modules/bin/Bin_Params.h"

#include <cmath>

namespace {

constexpr ModuleParam kTable[] = {
    {"scale", ModuleParams_Id("LvS1"), 0, 10000, ParamExtent::Fixed, 5000, "Scale",
     ValueLabelKind::DenoiseScale, nullptr, &Bin_ValueFigures},
};

constexpr BinPreset kPresets[] = {
    {ModuleParams_Id("Bt25"), 2500},
    {ModuleParams_Id("Bt35"), 3538},
    {ModuleParams_Id("Bt50"), 5000},
    {ModuleParams_Id("Bt71"), 7071},
};

}  // namespace

std::span<const BinPreset> Bin_Presets() {
    return kPresets;
}
std::span<const ModuleParam> Bin_ParamTable() {
    return kTable;
}

double Bin_Scale(const BinParams& params) {
    return params.scale * kBinScaleStep;
}

void Bin_ValueFigures(uint32_t position, double figures[3]) {
    const double s = position * kBinScaleStep;
    figures[0] = position * 0.01;
    figures[1] = 100 / (s * s);
    figures[2] = -2 * std::log2(s);
}

std::string Bin_LogBlock(const BinParams& params) {
    const int32_t values[1] = {ModuleParams_Clamp(kTable[0], params.scale, 0, 0)};
    return Log_ParameterBlock(kBinTitle, kTable, values, 0, 0);
}
