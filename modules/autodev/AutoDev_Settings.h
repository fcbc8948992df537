// What one AutoDev computation is asked to do, shared by the kernel's stages.
#pragma once

#include <cstdint>

// The kernel's settings (modules/autodev/AutoDev_Params.h derives them from
// the setter positions for an image size).
struct AutoDevSettings {
    double p1 = 0.5;                      // blur half-width
    double p2 = 1.0;                      // curve exponent
    double p3 = 0.5;                      // tone blend
    double p4 = 0.15;                     // weight outside the RoI, scaled by the RoI's share of the image
    int32_t roiX = 0, roiY = 0;           // lower corner
    int32_t roiWidth = 0, roiHeight = 0;  // max - min of the corner pairs
    bool monochrome = false;              // the result stays grey
};
