// Rotate's row in the module list.
#include "modules/Module.h"
#include "modules/rotate/Rotate_Params.h"

namespace {

ModuleRunStatus Run(ImageBuffer* image, const void* params, const KernelControl* control, ImagePtr* result) {
    result->reset(Rotate_Run(image, Rotate_Settings(*static_cast<const RotateParams*>(params)), control));
    return *result ? ModuleRunStatus::kDone : ModuleRunStatus::kCancelled;
}

}  // namespace

extern const ModuleScreenHooks kRotateScreen;

extern const ModuleDef kRotateModule = {
    .name = "Rotate",
    .option = "rotate",
    .summary = "rotation in tenths of a degree about the centre, onto the canvas that holds the turned image",
    .buttonId = ModuleParams_Id("BtRt"),
    .form = "Pellucida_NoxRotate_MainForm.xml",
    .params = Rotate_ParamTable(),
    .presets = Rotate_Presets(),
    .initParams = Module_InitParams<RotateParams>,
    .maskFollows = true,
    .appliesOnKeep = false,
    .logged = true,
    .globalStretch = false,
    .run = Run,
    .screen = &kRotateScreen,
};
