// The stereo module's screen: three buttons choose what the preview shows,
// the one showing is greyed out, and the status line says how to look at it.
#include "modules/Module.h"
#include "modules/stereo/Stereo_Params.h"

namespace {

struct PreviewButton {
    uint32_t buttonId;
    StereoPreview preview;
    const char* status;
};

constexpr PreviewButton kButtons[] = {
    {ModuleParams_Id("BtPD"), StereoPreview::kDepth, "Depth map: nearer is brighter."},
    {ModuleParams_Id("BtPP"), StereoPreview::kPair, "Left and right views side by side (parallel viewing)."},
    {ModuleParams_Id("BtPA"), StereoPreview::kAnaglyph, "Red-cyan anaglyph: red filter on the left eye."},
};

void Refresh(ModuleScreen* screen) {
    const auto& p = *static_cast<const StereoParams*>(screen->params);
    for (const PreviewButton& b : kButtons) {
        const bool showing = int32_t(b.preview) == p.preview;
        screen->ops->setEnabled(screen, b.buttonId, !showing);
        if (showing) screen->ops->setText(screen, ModuleParams_Id("LbSz"), b.status);
    }
}

void Changed(ModuleScreen* screen, uint32_t) {
    Refresh(screen);
}

void Button(ModuleScreen* screen, uint32_t buttonId) {
    for (const PreviewButton& b : kButtons) {
        if (b.buttonId != buttonId) continue;
        static_cast<StereoParams*>(screen->params)->preview = int32_t(b.preview);
        screen->ops->paramsChanged(screen);
        Refresh(screen);
    }
}

// The depth map is grey levels, not data: the screen stretch is not for it.
bool ShownAsIs(const void* params) {
    return static_cast<const StereoParams*>(params)->preview == int32_t(StereoPreview::kDepth);
}

}  // namespace

extern const ModuleScreenHooks kStereoScreen = {
    .enter = Refresh, .changed = Changed, .button = Button, .shownAsIs = ShownAsIs};
