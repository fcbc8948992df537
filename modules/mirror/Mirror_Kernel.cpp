#include "modules/mirror/Mirror_Kernel.h"

#include "image/Image.h"

#include <algorithm>

void Mirror_Run(ImageBuffer* image, const MirrorSettings& settings) {
    if (!image) return;
    for (int64_t* plane : {image->red, image->green, image->blue, image->alpha, image->aux}) {
        if (!plane) continue;
        if (settings.horizontal) {
            for (int32_t y = 0; y < image->height; ++y) {
                int64_t* row = plane + int64_t{y} * image->stride;
                std::reverse(row, row + image->width);
            }
        } else {
            for (int32_t y = 0, z = image->height - 1; y < z; ++y, --z)
                std::swap_ranges(plane + int64_t{y} * image->stride,
                                 plane + int64_t{y} * image->stride + image->width,
                                 plane + int64_t{z} * image->stride);
        }
    }
}
