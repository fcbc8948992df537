#include "image/Image_Srgb.h"

#include "image/Image.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

double Linear(double u) {
    return u <= 0.04045 ? u * 0.07739938080495357 : std::pow((u + 0.055) * 0.9478672985781991, 2.4);
}

}  // namespace

void Image_DecodeSrgb(ImageBuffer* image) {
    if (!image || image->maxValue <= 0) return;
    const int64_t max = image->maxValue;
    // Working images have up to 30 bits: the curve is tabulated on 2^16
    // intervals and interpolated linearly in between, which is well inside a
    // step of the result for the curve's gentle bends; smaller depths are
    // looked up exactly.
    const int64_t intervals = std::min<int64_t>(max, 1 << 16);
    std::vector<double> table(size_t(intervals) + 1);
    for (int64_t i = 0; i <= intervals; ++i) table[size_t(i)] = Linear(double(i) / double(intervals));
    const double toTable = double(intervals) / double(max);
    for (int64_t* plane : {image->red, image->green, image->blue}) {
        for (int32_t y = 0; y < image->height; ++y) {
            int64_t* row = plane + int64_t{y} * image->stride;
            for (int32_t x = 0; x < image->width; ++x) {
                const int64_t v = std::clamp<int64_t>(row[x], 0, max);
                const double at = double(v) * toTable;
                const int64_t i = std::min<int64_t>(int64_t(at), intervals - 1);
                const double f = at - double(i);
                const double lin = table[size_t(i)] + (table[size_t(i) + 1] - table[size_t(i)]) * f;
                row[x] = std::clamp<int64_t>(int64_t(lin * double(max)), 0, max);
            }
        }
    }
}
