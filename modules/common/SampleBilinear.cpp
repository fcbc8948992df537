// SampleBilinear on a whole image; the per-plane arithmetic is in the header.
#include "modules/common/SampleBilinear.h"

#include "image/Image.h"

BilinearSample SampleBilinear(const ImageBuffer* image, double x, double y) {
    BilinearSample s;
    if (!image || !(x > -1.0) || !(y > -1.0) || !(x < image->width) || !(y < image->height)) return s;
    const int32_t ix = static_cast<int32_t>(x), iy = static_cast<int32_t>(y);
    const double tx = x - ix, ty = y - iy;
    const int32_t dx = ix + 1 < image->width ? 1 : 0;
    const int32_t dy = iy + 1 < image->height ? 1 : 0;
    s.red = SampleBilinear_Plane(image->red, image->stride, ix, iy, dx, dy, tx, ty, image->maxValue);
    s.green = SampleBilinear_Plane(image->green, image->stride, ix, iy, dx, dy, tx, ty, image->maxValue);
    s.blue = SampleBilinear_Plane(image->blue, image->stride, ix, iy, dx, dy, tx, ty, image->maxValue);
    return s;
}
