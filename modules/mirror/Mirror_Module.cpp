// The two mirrors' rows in the module list: whole-image operations of the main
// form, without a form or parameters, and not module steps of the log.
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
    return {name,    option, summary, ModuleParams_Id(button),
            nullptr, {},     {},      Module_InitParams<NoParams>,
            true,    false,  false,   run,
            nullptr};
}

}  // namespace

extern const ModuleDef kMirrorHorizontalModule =
    Mirror("Mirror left-right", "flip=h", "mirror left to right", "BtMH", Run<true>);
extern const ModuleDef kMirrorVerticalModule =
    Mirror("Mirror top-bottom", "flip=v", "mirror top to bottom", "BtMV", Run<false>);
