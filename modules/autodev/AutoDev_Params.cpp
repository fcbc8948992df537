// AutoDev's parameter table.
#include "modules/autodev/AutoDev_Params.h"

namespace {

constexpr const char* kTextOff = "off";

constexpr ModuleParam kTable[] = {
    {"blur", ModuleParams_Id("LvS1"), 0, 490, ParamExtent::Fixed, 0, "Detail Blur",
     ValueLabelKind::TenthPixelsFromOne, kTextOff, nullptr},
    {"outside", ModuleParams_Id("LvS2"), 0, 100, ParamExtent::Fixed, 15, "Outside RoI Influence",
     ValueLabelKind::Percent, nullptr, nullptr},
    {"x0", ModuleParams_Id("LvS3"), 0, 0, ParamExtent::Width, 0, "RoI X1", ValueLabelKind::Pixels, nullptr,
     nullptr},
    {"y0", ModuleParams_Id("LvS4"), 0, 0, ParamExtent::Height, 0, "RoI Y1", ValueLabelKind::Pixels, nullptr,
     nullptr},
    {"x1", ModuleParams_Id("LvS5"), 0, 0, ParamExtent::Width, -1, "RoI X2", ValueLabelKind::PixelsAndRestX,
     nullptr, nullptr},
    {"y1", ModuleParams_Id("LvS6"), 0, 0, ParamExtent::Height, -1, "RoI Y2", ValueLabelKind::PixelsAndRestY,
     nullptr, nullptr},
    {"curve", ModuleParams_Id("LvS7"), 0, 1000, ParamExtent::Fixed, 100, "Curve Exponent",
     ValueLabelKind::Hundredths, nullptr, nullptr},
    {"tone", ModuleParams_Id("LvS8"), 0, 100, ParamExtent::Fixed, 50, "Tone Blend", ValueLabelKind::Percent,
     nullptr, nullptr},
};

}  // namespace

std::span<const ModuleParam> AutoDev_ParamTable() {
    return kTable;
}

void AutoDev_ParamValues(const AutoDevParams& params, int32_t width, int32_t height, int32_t values[8]) {
    const int32_t raw[8] = {params.blur,  params.outside, params.roiX0, params.roiY0,
                            params.roiX1, params.roiY1,   params.curve, params.tone};
    for (int i = 0; i < 8; ++i) {
        const ModuleParam& p = kTable[i];
        const bool last = p.extent != ParamExtent::Fixed && raw[i] < 0;
        values[i] =
            last ? ModuleParams_Maximum(p, width, height) : ModuleParams_Clamp(p, raw[i], width, height);
    }
}

AutoDevParams AutoDev_ParamsFromValues(const int32_t values[8]) {
    AutoDevParams p;
    p.blur = values[0];
    p.outside = values[1];
    p.roiX0 = values[2];
    p.roiY0 = values[3];
    p.roiX1 = values[4];
    p.roiY1 = values[5];
    p.curve = values[6];
    p.tone = values[7];
    return p;
}

std::string AutoDev_LogBlock(const AutoDevParams& params, int32_t width, int32_t height) {
    int32_t values[8];
    AutoDev_ParamValues(params, width, height, values);
    return Log_ParameterBlock(kAutoDevTitle, kTable, values, width, height);
}
