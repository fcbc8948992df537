// AutoDev's row in the module list.
#include "modules/Module.h"
#include "modules/autodev/AutoDev_Params.h"

namespace {

AutoDevSettings SettingsFor(const void* params, const ImageBuffer* image) {
    const auto& p = *static_cast<const AutoDevParams*>(params);
    return AutoDev_Settings(p, image->width, image->height, AutoDev_ParamsMonochrome(p, image));
}

// The batch stretches in place: a large image is not held twice.
ModuleRunStatus Run(ImageBuffer* image, const void* params, const KernelControl* control, ImagePtr*) {
    return AutoDev_RunInto(image, image, SettingsFor(params, image), control) ? ModuleRunStatus::kDone
                                                                              : ModuleRunStatus::kCancelled;
}

// The preview reads the working image and writes a new one: no copy first.
ModuleRunStatus RunFrom(const ImageBuffer* source, const void* params, const KernelControl* control,
                        ImagePtr* result) {
    result->reset(AutoDev_Run(source, SettingsFor(params, source), control));
    return *result ? ModuleRunStatus::kDone : ModuleRunStatus::kCancelled;
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
    .runFrom = RunFrom,
};
