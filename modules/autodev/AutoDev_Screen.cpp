// AutoDev's screen: the Region of Interest dragged in the preview and kept in
// the four corner setters, the status line and the controls that only make
// sense with a RoI, the RoI remembered for the next image of the same width,
// and the shading that shows which part of the picture the curve favours.
#include "modules/Module.h"
#include "modules/autodev/AutoDev_Params.h"

#include <algorithm>

namespace {

constexpr const char* kWholeImageText =
    "Click and drag to define an optional Region Of Interest (RoI) for optimization.";
constexpr const char* kRoiText = "A Region Of Interest (RoI) is active. You can click 'No RoI' to reset RoI.";
constexpr const char* kStretchedTitle = "Already stretched data";
constexpr const char* kStretchedText =
    "You have indicated that this image has been already stretched and is no longer linear. Please note "
    "that AutoDev works best on data that is still linear.";

constexpr const char* kPreviouslyTitle = "Previously Stretched";
constexpr const char* kPreviouslyText =
    "You have applied a global stretch before, using Develop or Auto Develop. Would you like to re-do a "
    "global stretch (keeping any local stretching you did after the previous one intact), or would you like "
    "to simply stretch the image as it currently is?";
constexpr const char* kRedoButton = "Redo global stretch";
constexpr const char* kAsIsButton = "Stretch the image as-is";

constexpr uint32_t kStatusLabel = ModuleParams_Id("LbSz");
constexpr uint32_t kNoRoiButton = ModuleParams_Id("BtAl");
constexpr uint32_t kOutsideSetter = ModuleParams_Id("LvS2");

// The RoI is kept from one entry to the next, for an image of the same width;
// the monochrome flag is the entered image's.
struct RememberedRoi {
    int32_t width = -1;
    int32_t x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    int32_t monochrome = -1;
};
static_assert(sizeof(RememberedRoi) <= 64);

struct Roi {
    int32_t x0, y0, x1, y1;  // ordered, inclusive, kParamLast resolved
};

Roi CurrentRoi(const ModuleScreen* screen) {
    const auto& p = *static_cast<const AutoDevParams*>(screen->params);
    const int32_t lastX = screen->image->width - 1, lastY = screen->image->height - 1;
    const auto x = [&](int32_t v) { return std::clamp(v == kParamLast ? lastX : v, 0, lastX); };
    const auto y = [&](int32_t v) { return std::clamp(v == kParamLast ? lastY : v, 0, lastY); };
    return {std::min(x(p.roiX0), x(p.roiX1)), std::min(y(p.roiY0), y(p.roiY1)),
            std::max(x(p.roiX0), x(p.roiX1)), std::max(y(p.roiY0), y(p.roiY1))};
}

bool WholeImage(const ModuleScreen* screen) {
    const Roi r = CurrentRoi(screen);
    return r.x0 == 0 && r.y0 == 0 && r.x1 == screen->image->width - 1 && r.y1 == screen->image->height - 1;
}

// The status line, "No RoI" and the outside weight follow the RoI; the RoI is
// remembered as it is now.
void Refresh(ModuleScreen* screen) {
    const bool whole = WholeImage(screen);
    screen->ops->setText(screen, kStatusLabel, whole ? kWholeImageText : kRoiText);
    screen->ops->setEnabled(screen, kNoRoiButton, !whole);
    screen->ops->setEnabled(screen, kOutsideSetter, !whole);
    const auto& p = *static_cast<const AutoDevParams*>(screen->params);
    auto& kept = *static_cast<RememberedRoi*>(screen->state);
    kept = {screen->image->width, p.roiX0, p.roiY0, p.roiX1, p.roiY1, kept.monochrome};
}

// "Redo global stretch" starts from the linear data kept from before the
// first stretch, in the image's present geometry.
void OnPreviously(ModuleScreen* screen, int button) {
    if (button == 0) screen->ops->useTrackedReference(screen);
}

void Enter(ModuleScreen* screen) {
    auto& p = *static_cast<AutoDevParams*>(screen->params);
    auto& kept = *static_cast<RememberedRoi*>(screen->state);
    // Tested once, before the first run, on the image itself.
    kept.monochrome = AutoDev_IsMonochrome(screen->image) ? 1 : 0;
    p.monochrome = kept.monochrome;
    if (kept.width == screen->image->width) {
        p.roiX0 = kept.x0, p.roiY0 = kept.y0, p.roiX1 = kept.x1, p.roiY1 = kept.y1;
        screen->ops->paramsChanged(screen);
    }
    Refresh(screen);
    if (screen->tracked && screen->stretchedBefore)
        screen->ops->ask(screen, kPreviouslyTitle, kPreviouslyText, kRedoButton, kAsIsButton, OnPreviously);
    else if (!screen->tracked)
        screen->ops->message(screen, kStretchedTitle, kStretchedText);
}

// A reset or preset gives the parameters their defaults: the flag comes back.
void Changed(ModuleScreen* screen, uint32_t) {
    static_cast<AutoDevParams*>(screen->params)->monochrome =
        static_cast<const RememberedRoi*>(screen->state)->monochrome;
    Refresh(screen);
}

void Button(ModuleScreen* screen, uint32_t buttonId) {
    if (buttonId != kNoRoiButton) return;
    auto& p = *static_cast<AutoDevParams*>(screen->params);
    p.roiX0 = 0, p.roiY0 = 0, p.roiX1 = kParamLast, p.roiY1 = kParamLast;
    screen->ops->paramsChanged(screen);
    Refresh(screen);
}

void Region(ModuleScreen* screen, const ModuleRegion& region) {
    auto& p = *static_cast<AutoDevParams*>(screen->params);
    p.roiX0 = region.x, p.roiY0 = region.y;
    p.roiX1 = region.x + region.width - 1, p.roiY1 = region.y + region.height - 1;
    screen->ops->paramsChanged(screen);
    Refresh(screen);
}

// Outside the RoI the picture is lightened, for display only: v = (3v + max) / 4.
// With the whole image as RoI the result is shown as it is.
ImageBuffer* Shade(ModuleScreen* screen, const ImageBuffer* result) {
    if (WholeImage(screen)) return nullptr;
    ImageBuffer* shown = Image_Clone(result);
    const Roi r = CurrentRoi(screen);
    const int64_t max = shown->maxValue;
    for (int64_t* plane : {shown->red, shown->green, shown->blue}) {
        if (!plane) continue;
        for (int32_t y = 0; y < shown->height; ++y) {
            int64_t* row = plane + size_t(y) * size_t(shown->stride);
            const bool inside = y >= r.y0 && y <= r.y1;
            for (int32_t x = 0; x < shown->width; ++x)
                if (!inside || x < r.x0 || x > r.x1) row[x] = (3 * row[x] + max) / 4;
        }
    }
    return shown;
}

}  // namespace

extern const ModuleScreenHooks kAutoDevScreen = {
    .enter = Enter, .changed = Changed, .button = Button, .region = Region, .shade = Shade};
