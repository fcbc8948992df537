// RotateImage: turns an image by an angle in degrees about its centre onto the
// bounding canvas, bilinear and black outside the source. 0 is a copy; 90, 180
// and 270 are lossless quarter turns in the same sense as the general case:
// output (x, y) takes source (y, H - 1 - x) at 90, (W - 1 - x, H - 1 - y) at
// 180 and (W - 1 - y, x) at 270.
#pragma once

#include "host/KernelControl.h"

#include <cstdint>

struct ImageBuffer;

struct RotateSettings {
    double degrees = 0;  // 0 <= degrees < 360
};

// c = cos(theta) (worked out as sin(theta + 90 degrees)) and s = sin(theta),
// as the general rotation steps with them.
void Rotate_SinCos(double degrees, double* c, double* s);

// Canvas of the general rotation: trunc(2 x the largest x') by trunc(2 x the
// largest y') over the four rotated corners (+-W/2, +-H/2).
void Rotate_OutputSize(int32_t width, int32_t height, double degrees, int32_t* outWidth, int32_t* outHeight);

// New image, or null when cancelled (tested per row; progress is row * 100 / H').
ImageBuffer* RotateImage(const ImageBuffer* image, double degrees, const KernelControl* control);
// The module's entry: RotateImage by the settings' angle.
ImageBuffer* Rotate_Run(const ImageBuffer* image, const RotateSettings& settings,
                        const KernelControl* control);
