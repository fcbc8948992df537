#include "modules/Module_List.h"

extern const ModuleDef kAutoDevModule;
extern const ModuleDef kBinModule;
extern const ModuleDef kRotateModule;
extern const ModuleDef kCropModule;
extern const ModuleDef kMirrorHorizontalModule;
extern const ModuleDef kMirrorVerticalModule;
extern const ModuleDef kStereoModule;

namespace {

constexpr const ModuleDef* kModules[] = {
    &kAutoDevModule,        &kBinModule,    &kRotateModule, &kCropModule, &kMirrorHorizontalModule,
    &kMirrorVerticalModule, &kStereoModule,
};

}  // namespace

std::span<const ModuleDef* const> Module_List() {
    return kModules;
}

const ModuleDef* Module_FindByButton(uint32_t buttonId) {
    for (const ModuleDef* module : kModules)
        if (module->buttonId == buttonId) return module;
    return nullptr;
}

const ModuleDef* Module_FindByName(std::string_view name) {
    for (const ModuleDef* module : kModules)
        if (name == module->name) return module;
    return nullptr;
}
