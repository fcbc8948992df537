// Rotate's screen: the levelling grid over the preview, spaced for the zoom
// the view shows it at, and "Crop corners", which keeps the turned picture
// and goes on to Crop with the largest rectangle free of black corners.
#include "modules/Module.h"
#include "modules/crop/Crop_Params.h"
#include "modules/rotate/Rotate_Grid.h"
#include "modules/rotate/Rotate_InnerRect.h"
#include "modules/rotate/Rotate_Params.h"

#include <new>

extern const ModuleDef kCropModule;

namespace {

constexpr uint32_t kCropCornersButton = ModuleParams_Id("BtCC");

double Degrees(const ModuleScreen* screen) {
    return Rotate_Settings(*static_cast<const RotateParams*>(screen->params)).degrees;
}

// A quarter turn, or none, leaves no corner to crop.
void Refresh(ModuleScreen* screen) {
    const double degrees = Degrees(screen);
    const bool quarter = degrees == 0 || degrees == 90 || degrees == 180 || degrees == 270;
    screen->ops->setEnabled(screen, kCropCornersButton, !quarter);
}

void Changed(ModuleScreen* screen, uint32_t) {
    Refresh(screen);
}

void Button(ModuleScreen* screen, uint32_t buttonId) {
    if (buttonId != kCropCornersButton) return;
    const RotateRect r = Rotate_InnerRect(screen->image->width, screen->image->height, Degrees(screen));
    if (r.x1 < r.x0) return;
    ModuleParamsBuffer crop;
    new (crop.bytes) CropParams{r.x0, r.y0, r.x1, r.y1};
    screen->ops->keepAndEnter(screen, kCropModule, crop);
}

void Mark(ModuleScreen* screen, ImageBuffer* shown) {
    Rotate_DrawGrid(shown, Rotate_GridSpacing(screen->viewZoom, screen->viewWidth, screen->viewHeight));
}

ImageBuffer* Shade(ModuleScreen* screen, const ImageBuffer* source) {
    ImageBuffer* shown = Image_Clone(source);
    Mark(screen, shown);
    return shown;
}

}  // namespace

extern const ModuleScreenHooks kRotateScreen = {
    .enter = Refresh,
    .changed = Changed,
    .button = Button,
    .region = nullptr,
    .shade = Shade,
    .shadeFollowsZoom = true,
};
