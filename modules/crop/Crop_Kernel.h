// Crop: the aspect presets on the crop rectangle, the cut of image and mask,
// and the left-right and top-bottom mirrors of the main form ("BtMH", "BtMV").
#pragma once

#include "modules/crop/Crop_Params.h"

#include <cstdint>

struct ImageBuffer;

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

// Mirrors of every plane present, in place.
void Crop_FlipHorizontal(ImageBuffer* image);
void Crop_FlipVertical(ImageBuffer* image);
