// Crop's parameter table and aspect presets.
#include "modules/crop/Crop_Params.h"

namespace {

constexpr ModuleParam kTable[] = {
    {"x0", ModuleParams_Id("LvS1"), 0, 0, ParamExtent::Width, 0, "X1", ValueLabelKind::Pixels, nullptr,
     nullptr},
    {"y0", ModuleParams_Id("LvS2"), 0, 0, ParamExtent::Height, 0, "Y1", ValueLabelKind::Pixels, nullptr,
     nullptr},
    {"x1", ModuleParams_Id("LvS3"), 0, 0, ParamExtent::Width, -1, "X2", ValueLabelKind::PixelsAndRestX,
     nullptr, nullptr},
    {"y1", ModuleParams_Id("LvS4"), 0, 0, ParamExtent::Height, -1, "Y2", ValueLabelKind::PixelsAndRestY,
     nullptr, nullptr},
};

constexpr AspectPreset kPresets[] = {
    {ModuleParams_Id("BtP0"), 1.5f, AspectMode::Shrink},
    {ModuleParams_Id("BtP1"), 0.6666667f, AspectMode::Shrink},
    {ModuleParams_Id("BtP2"), 1.7777778f, AspectMode::Shrink},
    {ModuleParams_Id("BtP3"), 0.5625f, AspectMode::Shrink},
    {ModuleParams_Id("BtP4"), 1.5f, AspectMode::Grow},
    {ModuleParams_Id("BtP5"), 0.6666667f, AspectMode::Grow},
    {ModuleParams_Id("BtP6"), 1.7777778f, AspectMode::Grow},
    {ModuleParams_Id("BtP7"), 0.5625f, AspectMode::Grow},
};

}  // namespace

std::span<const AspectPreset> Crop_AspectPresets() {
    return kPresets;
}
std::span<const ModuleParam> Crop_ParamTable() {
    return kTable;
}

CropRect Crop_Resolve(const CropRect& rect, int32_t width, int32_t height) {
    const int32_t raw[4] = {rect.x0, rect.y0, rect.x1, rect.y1};
    int32_t v[4];
    for (int i = 0; i < 4; ++i)
        v[i] = raw[i] < 0 ? ModuleParams_Maximum(kTable[i], width, height)
                          : ModuleParams_Clamp(kTable[i], raw[i], width, height);
    return {v[0], v[1], v[2], v[3]};
}

std::string Crop_LogBlock(const CropRect& rect, int32_t width, int32_t height) {
    const CropRect r = Crop_Resolve(rect, width, height);
    const int32_t values[4] = {r.x0, r.y0, r.x1, r.y1};
    return Log_ParameterBlock(kCropTitle, kTable, values, width, height);
}
