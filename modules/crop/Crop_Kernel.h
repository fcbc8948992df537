// Crop: the aspect presets on the crop rectangle and the cut of image and mask.
#pragma once

#include "host/KernelControl.h"

#include <cstdint>

struct ImageBuffer;

// Corners, both included.
struct CropRect {
    int32_t x0 = 0, y0 = 0, x1 = 0, y1 = 0;
};

struct CropSettings {
    CropRect rect;  // within the image
};

enum class AspectMode : uint8_t { Shrink, Grow };

// Corners ordered so that x0 <= x1 and y0 <= y1.
CropRect Crop_Order(const CropRect& rect);

// Forces the rectangle to the ratio R (width / height), shrinking one side or
// growing the other; the ratio arithmetic is single precision. A rectangle with
// a zero-length side is left as it is. The result is clamped to the setters'
// ranges for an image of width x height.
CropRect ApplyAspect(const CropRect& rect, float ratio, AspectMode mode, int32_t width, int32_t height);

// The image cut to the ordered rectangle, corners included; null when a side
// has zero length (nothing is cropped). Every plane present is cut, the
// attachment comes along.
ImageBuffer* Crop_Image(const ImageBuffer* image, const CropRect& rect);
// The module's entry: Crop_Image with the settings' rectangle. A cut copies
// rows and is not worth cancelling.
ImageBuffer* Crop_Run(const ImageBuffer* image, const CropSettings& settings, const KernelControl* control);
