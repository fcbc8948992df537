#include "modules/Module.h"

ModuleParamsBuffer Module_DefaultParams(const ModuleDef& module) {
    ModuleParamsBuffer buffer;
    module.initParams(buffer.bytes);
    return buffer;
}

ModuleRunStatus Module_Run(const ModuleDef& module, const void* params, ImageBuffer** image,
                           ImageBuffer** mask, const KernelControl* control) {
    if (!image || !*image) return ModuleRunStatus::kNoResult;
    ImagePtr result;
    const ModuleRunStatus status = module.run(*image, params, control, &result);
    if (status != ModuleRunStatus::kDone) return status;
    // The mask is run before either is replaced, so that a cancel in between
    // leaves the pair as it was.
    ImagePtr maskResult;
    if (module.maskFollows && mask && *mask) {
        const ModuleRunStatus maskStatus = module.run(*mask, params, control, &maskResult);
        if (maskStatus != ModuleRunStatus::kDone) return ModuleRunStatus::kCancelled;
    }
    if (result) {
        Image_Free(*image);
        *image = result.release();
    }
    if (maskResult) {
        Image_Free(*mask);
        *mask = maskResult.release();
    }
    return ModuleRunStatus::kDone;
}

ModuleRunStatus Module_RunFrom(const ModuleDef& module, const void* params, const ImageBuffer* source,
                               ImagePtr* result, const KernelControl* control) {
    result->reset();
    if (!source) return ModuleRunStatus::kNoResult;
    if (module.runFrom) return module.runFrom(source, params, control, result);
    ImageBuffer* image = Image_Clone(source);
    const ModuleRunStatus status = Module_Run(module, params, &image, nullptr, control);
    if (status == ModuleRunStatus::kDone)
        result->reset(image);
    else
        Image_Free(image);
    return status;
}

std::string Module_LogBlock(const ModuleDef& module, const void* params, int32_t width, int32_t height) {
    if (!module.logged) return {};
    return Log_ParameterBlock(module.name, module.params, params, width, height);
}
