// AutoDev's row in the module list.
#include "modules/Module.h"
#include "modules/autodev/AutoDev_Params.h"

namespace {

// The batch stretches in place: a large image is not held twice.
ModuleRunStatus Run(ImageBuffer* image, const void* params, const KernelControl* control, ImagePtr*) {
    const AutoDevSettings settings = AutoDev_Settings(
        *static_cast<const AutoDevParams*>(params), image->width, image->height, AutoDev_IsMonochrome(image));
    return AutoDev_RunInto(image, image, settings, control) ? ModuleRunStatus::kDone
                                                            : ModuleRunStatus::kCancelled;
}

}  // namespace

extern const ModuleScreenHooks kAutoDevScreen;

extern const ModuleDef kAutoDevModule = {
    .name = "AutoDev",
    .option = "autodev",
    .summary = "global stretch of linear data",
    .buttonId = ModuleParams_Id("BtAD"),
    .form = "Pellucida_NoxAutodev_MainForm.xml",
    .params = AutoDev_ParamTable(),
    .presets = {},
    .initParams = Module_InitParams<AutoDevParams>,
    .maskFollows = false,
    .appliesOnKeep = false,
    .logged = true,
    .globalStretch = true,
    .run = Run,
    .screen = &kAutoDevScreen,
};
