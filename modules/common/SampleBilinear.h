// Bilinear sampling of an image at a fractional position, shared by Bin and
// Rotate. ix = trunc(x), iy = trunc(y); when they lie inside the image, each
// channel is trunc(ty * ((1 - tx) * P(ix, iy + 1) + tx * P(ix + 1, iy + 1)) +
// (1 - ty) * ((1 - tx) * P(ix, iy) + tx * P(ix + 1, iy))), a neighbour beyond
// the last column (row) being the pixel's own column (row), clamped to
// 0..maxValue (just left of or above the first column or row the truncating
// index extrapolates). Outside the image every channel is 0.
#pragma once

#include <cstdint>

struct ImageBuffer;

struct BilinearSample {
    int64_t red = 0, green = 0, blue = 0;
};

BilinearSample SampleBilinear(const ImageBuffer* image, double x, double y);

// One plane at a position already known to be inside (ix, iy as truncated,
// tx, ty the fractions); the form the kernels' inner loops use.
inline int64_t SampleBilinear_Plane(const int64_t* plane, int32_t stride, int32_t ix, int32_t iy, int32_t dx,
                                    int32_t dy, double tx, double ty, int64_t maxValue) {
    const int64_t* p = plane + int64_t{iy} * stride + ix;
    const double p00 = static_cast<double>(p[0]);
    const double p10 = static_cast<double>(p[dx]);
    const double p01 = static_cast<double>(p[int64_t{dy} * stride]);
    const double p11 = static_cast<double>(p[int64_t{dy} * stride + dx]);
    const double v = ty * ((1 - tx) * p01 + tx * p11) + (1 - ty) * ((1 - tx) * p00 + tx * p10);
    if (!(v > 0)) return 0;
    const double m = static_cast<double>(maxValue);
    if (v >= m) return maxValue;
    return static_cast<int64_t>(v);
}
