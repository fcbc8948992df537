// The stereo module's row in the module list. Its result is a picture to look
// at (the depth map, the pair, the anaglyph), never a new working image: the
// form has no Keep, and what leaves the module are its exports, which log its
// parameter block themselves. In a batch the step gives the preview its
// parameters choose (the depth map by default).
#include "modules/Module.h"
#include "modules/stereo/Stereo_Params.h"

namespace {

ModuleRunStatus Run(ImageBuffer* image, const void* params, const KernelControl* control, ImagePtr* result) {
    result->reset(Stereo_Preview(image, Stereo_Settings(*static_cast<const StereoParams*>(params)), control));
    return *result ? ModuleRunStatus::kDone : ModuleRunStatus::kCancelled;
}

}  // namespace

extern const ModuleScreenHooks kStereoScreen;

extern const ModuleDef kStereoModule = {
    .name = "Stereo",
    .option = "stereo",
    .summary =
        "the depth map a stereo pair is made from (the window adds the pair, an anaglyph and the "
        "stereo, VR and 3D photo exports)",
    .buttonId = ModuleParams_Id("BStr"),
    .form = "Pellucida_NoxStereo_MainForm.xml",
    .params = Stereo_ParamTable(),
    .presets = {},
    .initParams = Module_InitParams<StereoParams>,
    .maskFollows = false,
    .appliesOnKeep = false,
    .logged = false,
    .globalStretch = false,
    .run = Run,
    .screen = &kStereoScreen,
};
