// Crop's parameter rows and aspect presets.
#include "modules/crop/Crop_Params.h"

namespace {

constexpr ModuleParam kRows[] = {
    {"x0", "rect", ModuleParams_Id("LvS1"), Param_Field<&CropParams::x0>, 0, 0, ParamExtent::Width, "X1",
     ValueLabelKind::Pixels, nullptr, nullptr},
    {"y0", "rect", ModuleParams_Id("LvS2"), Param_Field<&CropParams::y0>, 0, 0, ParamExtent::Height, "Y1",
     ValueLabelKind::Pixels, nullptr, nullptr},
    {"x1", "rect", ModuleParams_Id("LvS3"), Param_Field<&CropParams::x1>, 0, 0, ParamExtent::Width, "X2",
     ValueLabelKind::PixelsAndRestX, nullptr, nullptr},
    {"y1", "rect", ModuleParams_Id("LvS4"), Param_Field<&CropParams::y1>, 0, 0, ParamExtent::Height, "Y2",
     ValueLabelKind::PixelsAndRestY, nullptr, nullptr},
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

std::span<const ModuleParam> Crop_ParamTable() {
    return kRows;
}

std::span<const AspectPreset> Crop_AspectPresets() {
    return kPresets;
}

CropSettings Crop_Settings(const CropParams& params, int32_t width, int32_t height) {
    CropSettings s;
    s.rect = {ModuleParams_Position(kRows[0], &params, width, height),
              ModuleParams_Position(kRows[1], &params, width, height),
              ModuleParams_Position(kRows[2], &params, width, height),
              ModuleParams_Position(kRows[3], &params, width, height)};
    return s;
}
