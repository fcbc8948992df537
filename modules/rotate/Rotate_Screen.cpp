// Rotate's screen: the levelling grid over the preview, spaced for the zoom
// the view shows it at.
#include "modules/Module.h"
#include "modules/rotate/Rotate_Grid.h"

namespace {

void Shade(ModuleScreen* screen, ImageBuffer* shown) {
    Rotate_DrawGrid(shown, Rotate_GridSpacing(screen->viewZoom, screen->viewWidth, screen->viewHeight));
}

}  // namespace

extern const ModuleScreenHooks kRotateScreen = {
    .enter = nullptr,
    .changed = nullptr,
    .button = nullptr,
    .region = nullptr,
    .shade = Shade,
    .shadeFollowsZoom = true,
};
