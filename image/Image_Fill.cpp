#include "image/Image_Fill.h"

#include "image/Image.h"

#include <algorithm>
#include <vector>

namespace {

// The median is taken over at most about this many opaque pixels, on a grid.
constexpr int64_t kMedianSamples = 1 << 20;

}  // namespace

void Image_FillTransparent(ImageBuffer* image) {
    if (!image || !image->alpha) return;
    const int64_t opaque = image->maxValue - 1;
    const int64_t pixels = int64_t{image->width} * image->height;
    const int64_t step = std::max<int64_t>(1, pixels / kMedianSamples);
    int64_t* planes[3] = {image->red, image->green, image->blue};
    int64_t median[3];
    for (int c = 0; c < 3; ++c) {
        std::vector<int64_t> samples;
        for (int64_t i = 0; i < pixels; i += step) {
            const int64_t at = (i / image->width) * image->stride + i % image->width;
            if (image->alpha[at] >= opaque) samples.push_back(planes[c][at]);
        }
        if (samples.empty()) return;
        auto middle = samples.begin() + ptrdiff_t(samples.size() / 2);
        std::nth_element(samples.begin(), middle, samples.end());
        median[c] = *middle;
    }
    for (int32_t y = 0; y < image->height; ++y) {
        const int64_t row = int64_t{y} * image->stride;
        for (int32_t x = 0; x < image->width; ++x)
            if (image->alpha[row + x] < opaque)
                for (int c = 0; c < 3; ++c) planes[c][row + x] = median[c];
    }
}
