// One processing module as data: what the main form's button enters, which
// form it shows, its parameter rows and presets, how its step runs, and what
// follows the image. The desktop program, the command line and the replay of
// a processing log all go through these rows (modules/Module_List.h).
#pragma once

#include "host/KernelControl.h"
#include "image/Image.h"
#include "modules/common/ModuleParams.h"

#include <cstddef>
#include <cstdint>
#include <new>
#include <span>

enum class ModuleRunStatus : uint8_t {
    kDone,      // a result exists
    kNoResult,  // the parameters give none (Bin at scale 0): the image stays as it was
    kCancelled,
};

// Runs the module's step with the positions in `params` (its parameter
// struct). A module that makes a new image puts it into *result; one that
// works in place changes `image` and leaves *result empty. On kNoResult or
// kCancelled the image is as it was and *result is empty.
using ModuleRunFn = ModuleRunStatus (*)(ImageBuffer* image, const void* params, const KernelControl* control,
                                        ImagePtr* result);

// The step from a source it leaves unchanged into a new image in *result, for
// a module that can compute that way: the preview then reads the working
// image directly instead of a full copy made for every run.
using ModuleRunFromFn = ModuleRunStatus (*)(const ImageBuffer* source, const void* params,
                                            const KernelControl* control, ImagePtr* result);

// What a module's screen adds to the framework's, for the desktop program.
// The modules sit below the toolkit, so a screen acts on its form through the
// operations the application hands it; identifiers are the form's widgets.
struct ModuleScreen;
struct ModuleRegion {
    int32_t x = 0, y = 0, width = 0, height = 0;  // in image pixels
};
struct ModuleDef;
struct ModuleParamsBuffer;
struct ModuleScreenOps {
    void (*setText)(ModuleScreen* screen, uint32_t labelId, const char* text);
    void (*setEnabled)(ModuleScreen* screen, uint32_t widgetId, bool enabled);
    // The positions in `params` were changed by the screen: the setters show
    // them and the preview is computed again.
    void (*paramsChanged)(ModuleScreen* screen);
    void (*message)(ModuleScreen* screen, const char* title, const char* text);  // one "OK"
    // A question with two answers; `answered` gets 0 or 1.
    void (*ask)(ModuleScreen* screen, const char* title, const char* text, const char* first,
                const char* second, void (*answered)(ModuleScreen* screen, int button));
    // The computation starts from the tracked linear reference instead of the
    // working image (false when there is none).
    bool (*useTrackedReference)(ModuleScreen* screen);
    // The preview is shown again as the module marks it up now; with
    // `remakeDisplay` its display picture is made again first.
    void (*refreshPreview)(ModuleScreen* screen, bool remakeDisplay);
    // The box inside the stacking-artefact border the load found, once per
    // loaded image and only while its geometry is unchanged (false otherwise).
    bool (*takeArtefactBox)(ModuleScreen* screen, ModuleRegion* box);
    // Keep, as the Keep button does, then enter `next` with these positions.
    // The screen is gone once the result is kept: nothing may follow the call.
    void (*keepAndEnter)(ModuleScreen* screen, const ModuleDef& next, const ModuleParamsBuffer& params);
};
struct ModuleScreen {
    const ModuleScreenOps* ops;
    void* application;
    const ImageBuffer* image;  // the image the module started from
    void* params;              // the module's parameter struct, as the setters show it
    void* state;               // the module's own, kept while the program runs
    bool linear;               // the data is still linear (the load's answers)
    bool tracked;              // tracking is on
    bool stretchedBefore;      // a global stretch was kept before
    // For `shade`: the zoom in percent at which the view will show the marked-up
    // copy, and the view's size in screen pixels.
    int32_t viewZoom = 100;
    int32_t viewWidth = 0, viewHeight = 0;
};
struct ModuleScreenHooks {
    void (*enter)(ModuleScreen* screen) = nullptr;
    // A setter moved, a preset was pressed; 0: every position was set from
    // outside, so everything that shows them is refreshed.
    void (*changed)(ModuleScreen* screen, uint32_t widgetId) = nullptr;
    // A button the framework does not handle.
    void (*button)(ModuleScreen* screen, uint32_t buttonId) = nullptr;
    // A rectangle dragged in the preview; null: dragging pans the view.
    void (*region)(ModuleScreen* screen, const ModuleRegion& region) = nullptr;
    // The result as the view shows it: a marked-up copy, or null to show the
    // result itself (no copy of a large result is made for nothing). A module
    // that computes nothing until Keep marks up the image itself.
    ImageBuffer* (*shade)(ModuleScreen* screen, const ImageBuffer* result) = nullptr;
    // For a module that computes nothing until Keep: a picture made from
    // `image` (the working image or its quick copy) for the eye only, shown
    // as it is instead of through the screen stretch; null shows `image`.
    ImageBuffer* (*display)(ModuleScreen* screen, const ImageBuffer* image) = nullptr;
    // True when the result computed with these positions is a picture made
    // for the eye (a map) that the screen stretch of linear data would spoil.
    bool (*shownAsIs)(const void* params) = nullptr;
    bool shadeFollowsZoom = false;  // the markup depends on the zoom: made again on a zoom step
};

// Room for any module's parameter struct, so that a step can be held without
// knowing its module (Module_InitParams checks each struct fits).
inline constexpr size_t kModuleParamsCapacity = 64;
struct ModuleParamsBuffer {
    alignas(std::max_align_t) unsigned char bytes[kModuleParamsCapacity] = {};
};

struct ModuleDef {
    const char* name;     // the title of its log block ("AutoDev")
    const char* option;   // the command-line option without its dashes ("autodev", "flip=h")
    const char* summary;  // one line of help
    uint32_t buttonId;    // the main-form button that enters it or runs it ("BtAD")
    const char* form;     // its form's archive entry; null for a main-form operation
    std::span<const ModuleParam> params;
    std::span<const ParamPreset> presets;
    void (*initParams)(void* params);  // the defaults: a value-initialised parameter struct
    bool maskFollows;    // a geometry step: the mask (and tracking data) is transformed with the image
    bool appliesOnKeep;  // computes nothing until Keep (Crop)
    bool logged;         // writes a parameter block when kept
    bool globalStretch;  // its result is stretched data: shown as it is, and remembered when kept
    ModuleRunFn run;
    const ModuleScreenHooks* screen;
    ModuleRunFromFn runFrom = nullptr;  // optional
};

template <class Params>
void Module_InitParams(void* params) {
    static_assert(sizeof(Params) <= kModuleParamsCapacity && alignof(Params) <= alignof(std::max_align_t));
    new (params) Params{};
}

// The module's default positions in a buffer.
ModuleParamsBuffer Module_DefaultParams(const ModuleDef& module);
// The module's step on the image, and on the mask too when it follows. On
// kDone both are replaced; otherwise both are as they were.
ModuleRunStatus Module_Run(const ModuleDef& module, const void* params, ImageBuffer** image,
                           ImageBuffer** mask, const KernelControl* control);
// The step from `source`, which is not changed, into *result (the mask does not
// follow): the module's own copying run, or a copy run in place.
ModuleRunStatus Module_RunFrom(const ModuleDef& module, const void* params, const ImageBuffer* source,
                               ImagePtr* result, const KernelControl* control);

// The parameter block for the processing log, with the size of the image the
// step was applied to; empty for a module that is not logged.
std::string Module_LogBlock(const ModuleDef& module, const void* params, int32_t width, int32_t height);
