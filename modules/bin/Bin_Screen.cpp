// Bin's screen: the status line gives the size the image will have.
#include "modules/Module.h"
#include "modules/bin/Bin_Params.h"

#include <cstdio>

namespace {

void Refresh(ModuleScreen* screen) {
    const double s = static_cast<const BinParams*>(screen->params)->scale * 0.0001;
    char text[64];
    std::snprintf(text, sizeof text, "Image Size %d x %d pixels", int(screen->image->width * s),
                  int(screen->image->height * s));
    screen->ops->setText(screen, ModuleParams_Id("LbSz"), text);
}

void Changed(ModuleScreen* screen, uint32_t) {
    Refresh(screen);
}

}  // namespace

extern const ModuleScreenHooks kBinScreen = {.enter = Refresh, .changed = Changed};
