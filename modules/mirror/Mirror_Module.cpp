// The two mirrors' rows in the module list: whole-image operations of the main
// form, without a form or parameters. Each is logged as a block with its title
// and no parameter lines, so that a replay of the log repeats it.
#include "modules/Module.h"
#include "modules/mirror/Mirror_Kernel.h"

namespace {

struct NoParams {};

template <bool Horizontal>
ModuleRunStatus Run(ImageBuffer* image, const void*, const KernelControl*, ImagePtr*) {
    Mirror_Run(image, MirrorSettings{Horizontal});
    return ModuleRunStatus::kDone;
}

constexpr ModuleDef Mirror(const char* name, const char* option, const char* summary, const char (&button)[5],
                           ModuleRunFn run) {
    return {.name = name,
            .option = option,
            .summary = summary,
            .buttonId = ModuleParams_Id(button),
            .form = nullptr,
            .params = {},
            .presets = {},
            .initParams = Module_InitParams<NoParams>,
            .maskFollows = true,
            .appliesOnKeep = false,
            .logged = true,
            .globalStretch = false,
            .run = run,
            .screen = nullptr};
}

}  // namespace

extern const ModuleDef kMirrorHorizontalModule =
    Mirror("Mirror left-right", "flip=h", "mirror left to right", "BtMH", Run<true>);
extern const ModuleDef kMirrorVerticalModule =
    Mirror("Mirror top-bottom", "flip=v", "mirror top to bottom", "BtMV", Run<false>);
