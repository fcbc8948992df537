// Crop's screen: the rectangle dragged in the preview or set on the four corner
// setters, drawn over the picture with the rest dimmed; the aspect buttons; the
// status line with the new size; the rectangle remembered for the next entry
// on an image of the same size, or the box inside a stacking-artefact border
// on the first entry after loading. Linear tracked data is previewed through
// AutoDev's automatic stretch, as luminance or in colour.
#include "modules/Module.h"
#include "modules/autodev/AutoDev_Params.h"
#include "modules/crop/Crop_Params.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr const char* kSizeText = "Click & drag to crop. New image is %d x %d pixels.";
constexpr const char* kStretchedSizeText =
    "Click & drag to crop. New image is %d x %d pixels. Please check color too (courtesy AutoDev applied).";
// The toggle's caption names the view it switches to.
constexpr const char* kShowColourCaption = "&language-lumachromachroma;";
constexpr const char* kShowLuminanceCaption = "&language-lumachromaluma;";

constexpr uint32_t kStatusLabel = ModuleParams_Id("LbSz");
constexpr uint32_t kViewToggle = ModuleParams_Id("BtLU");

// Kept from one entry to the next.
struct CropMemory {
    int32_t width = -1, height = -1;  // of the image the rectangle was set on
    CropRect rect;
    bool colourView = false;  // this entry's preview of stretched data
};
static_assert(sizeof(CropMemory) <= 64);

CropMemory& Memory(ModuleScreen* screen) {
    return *static_cast<CropMemory*>(screen->state);
}
CropParams& Params(ModuleScreen* screen) {
    return *static_cast<CropParams*>(screen->params);
}

// The preview shows linear tracked data with an automatic stretch.
bool Stretched(const ModuleScreen* screen) {
    return screen->linear && screen->tracked;
}

CropRect Current(const ModuleScreen* screen) {
    return Crop_Settings(*static_cast<const CropParams*>(screen->params), screen->image->width,
                         screen->image->height)
        .rect;
}

void SetRect(ModuleScreen* screen, const CropRect& r) {
    Params(screen) = {r.x0, r.y0, r.x1, r.y1};
}

// The status line follows the rectangle, which is remembered as it is now.
void Refresh(ModuleScreen* screen) {
    const CropRect r = Crop_Order(Current(screen));
    char text[160];
    std::snprintf(text, sizeof text, Stretched(screen) ? kStretchedSizeText : kSizeText, r.x1 - r.x0 + 1,
                  r.y1 - r.y0 + 1);
    screen->ops->setText(screen, kStatusLabel, text);
    CropMemory& kept = Memory(screen);
    kept.width = screen->image->width;
    kept.height = screen->image->height;
    kept.rect = Current(screen);
}

void Enter(ModuleScreen* screen) {
    CropMemory& kept = Memory(screen);
    ModuleRegion box;
    if (screen->ops->takeArtefactBox(screen, &box)) {
        SetRect(screen, {box.x, box.y, box.x + box.width - 1, box.y + box.height - 1});
        screen->ops->paramsChanged(screen);
    } else if (kept.width == screen->image->width && kept.height == screen->image->height) {
        SetRect(screen, kept.rect);
        screen->ops->paramsChanged(screen);
    }
    kept.colourView = false;
    screen->ops->setEnabled(screen, kViewToggle, Stretched(screen));
    screen->ops->setText(screen, kViewToggle, kShowColourCaption);
    Refresh(screen);
}

void Changed(ModuleScreen* screen, uint32_t widgetId) {
    Refresh(screen);
    if (widgetId == 0) screen->ops->refreshPreview(screen, false);
}

void Button(ModuleScreen* screen, uint32_t buttonId) {
    if (buttonId == kViewToggle) {
        bool& colour = Memory(screen).colourView;
        colour = !colour;
        screen->ops->setText(screen, kViewToggle, colour ? kShowLuminanceCaption : kShowColourCaption);
        screen->ops->refreshPreview(screen, true);
        return;
    }
    for (const AspectPreset& preset : Crop_AspectPresets()) {
        if (preset.buttonId != buttonId) continue;
        SetRect(screen, ApplyAspect(Current(screen), preset.ratio, preset.mode, screen->image->width,
                                    screen->image->height));
        screen->ops->paramsChanged(screen);
        Refresh(screen);
    }
}

void Region(ModuleScreen* screen, const ModuleRegion& region) {
    SetRect(screen, {region.x, region.y, region.x + region.width - 1, region.y + region.height - 1});
    screen->ops->paramsChanged(screen);
    Refresh(screen);
}

// Outside the rectangle the picture is dimmed to a third; its edge is drawn
// at full scale, a line about as wide as one pixel of a fitted view.
void Mark(ModuleScreen* screen, ImageBuffer* shown) {
    const CropRect r = Crop_Order(Current(screen));
    const int32_t line = std::max(1, std::max(shown->width, shown->height) / 600);
    const auto inside = [](int32_t v, int32_t lo, int32_t hi) { return v >= lo && v <= hi; };
    for (int64_t* plane : {shown->red, shown->green, shown->blue}) {
        if (!plane) continue;
        for (int32_t y = 0; y < shown->height; ++y) {
            int64_t* row = plane + size_t(y) * size_t(shown->stride);
            const bool rowIn = inside(y, r.y0, r.y1);
            const bool rowEdge = rowIn && (y < r.y0 + line || y > r.y1 - line);
            for (int32_t x = 0; x < shown->width; ++x) {
                if (!rowIn || !inside(x, r.x0, r.x1))
                    row[x] /= 3;
                else if (rowEdge || x < r.x0 + line || x > r.x1 - line)
                    row[x] = shown->maxValue;
            }
        }
    }
}

// AutoDev at its defaults, for the eye; the luminance view is its grey.
ImageBuffer* Display(ModuleScreen* screen, const ImageBuffer* image) {
    if (!Stretched(screen)) return nullptr;
    const bool mono = AutoDev_IsMonochrome(image);
    ImageBuffer* shown =
        AutoDev_Run(image, AutoDev_Settings(AutoDevParams{}, image->width, image->height, mono), nullptr);
    if (!shown || Memory(screen).colourView || mono) return shown;
    const size_t n = size_t(shown->stride) * size_t(shown->height);
    for (size_t i = 0; i < n; ++i)
        shown->red[i] = shown->green[i] = shown->blue[i] =
            (299 * shown->red[i] + 587 * shown->green[i] + 114 * shown->blue[i]) / 1000;
    return shown;
}

ImageBuffer* Shade(ModuleScreen* screen, const ImageBuffer* source) {
    ImageBuffer* shown = Image_Clone(source);
    Mark(screen, shown);
    return shown;
}

}  // namespace

extern const ModuleScreenHooks kCropScreen = {.enter = Enter,
                                              .changed = Changed,
                                              .button = Button,
                                              .region = Region,
                                              .shade = Shade,
                                              .display = Display};
