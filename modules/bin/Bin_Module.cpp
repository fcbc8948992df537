// Bin's row in the module list.
#include "modules/Module.h"
#include "modules/bin/Bin_Params.h"

namespace {

ModuleRunStatus Run(ImageBuffer* image, const void* params, const KernelControl* control, ImagePtr* result) {
    result->reset(Bin_Run(image, Bin_Settings(*static_cast<const BinParams*>(params)), control));
    if (*result) return ModuleRunStatus::kDone;
    return KernelControl_Cancelled(control) ? ModuleRunStatus::kCancelled : ModuleRunStatus::kNoResult;
}

}  // namespace

extern const ModuleScreenHooks kBinScreen;

extern const ModuleDef kBinModule = {
    .name = "Bin",
    .option = "bin",
    .summary =
        "binning: the scale in steps of 0.0001 (5000 halves the size), trading resolution for lower noise",
    .buttonId = ModuleParams_Id("BSBi"),
    .form = "Pellucida_NoxBin_MainForm.xml",
    .params = Bin_ParamTable(),
    .presets = Bin_Presets(),
    .initParams = Module_InitParams<BinParams>,
    .maskFollows = true,
    .appliesOnKeep = false,
    .logged = true,
    .globalStretch = false,
    .run = Run,
    .screen = &kBinScreen,
};
