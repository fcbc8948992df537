// The result image of a kernel that changes the size: the source's depth,
// maximum and mono flag on planes of the new size.
#pragma once

#include "image/Image.h"

inline ImageBuffer* Kernel_CreateLike(const ImageBuffer* source, int32_t width, int32_t height) {
    ImageBuffer* out = Image_Create(width, height);
    out->bitDepth = source->bitDepth;
    out->maxValue = source->maxValue;
    out->mono = source->mono;
    return out;
}
