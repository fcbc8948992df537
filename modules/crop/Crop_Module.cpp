// Crop's row in the module list.
#include "modules/Module.h"
#include "modules/crop/Crop_Params.h"

namespace {

// A rectangle with a zero-length side crops nothing.
ModuleRunStatus Run(ImageBuffer* image, const void* params, const KernelControl* control, ImagePtr* result) {
    const CropSettings settings =
        Crop_Settings(*static_cast<const CropParams*>(params), image->width, image->height);
    result->reset(Crop_Run(image, settings, control));
    return *result ? ModuleRunStatus::kDone : ModuleRunStatus::kNoResult;
}

}  // namespace

extern const ModuleScreenHooks kCropScreen;

extern const ModuleDef kCropModule = {
    .name = "Crop",
    .option = "crop",
    .summary = "keep the box between two corners, both included",
    .buttonId = ModuleParams_Id("BSCr"),
    .form = "Pellucida_NoxCrop_MainForm.xml",
    .params = Crop_ParamTable(),
    .presets = {},
    .initParams = Module_InitParams<CropParams>,
    .maskFollows = true,
    .appliesOnKeep = true,
    .logged = true,
    .globalStretch = false,
    .run = Run,
    .screen = &kCropScreen,
};
