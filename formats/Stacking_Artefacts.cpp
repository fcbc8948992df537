// A line (row or column) scanned from an edge inwards ends the border when,
// walking along it from its first sample, a sample brighter than the channel's
// mean comes before any sample equal to 0. Each side's border is the widest
// that any of the three channels finds.
#include "formats/Stacking_Artefacts.h"

#include "image/Image.h"

#include <algorithm>

namespace {

// Mean of the samples below maxValue, taken at 14-bit precision. A channel
// with no such sample (saturated everywhere) takes maxValue - 1, so that its
// samples count as bright and leave no border.
int64_t ChannelMean(const ImageBuffer* image, const int64_t* plane) {
    const int shift = std::max(0, int(image->bitDepth) - 14);
    int64_t sum = 0, count = 0;
    for (int32_t y = 0; y < image->height; ++y) {
        const int64_t* row = plane + int64_t(y) * image->stride;
        for (int32_t x = 0; x < image->width; ++x) {
            if (row[x] < image->maxValue) {
                sum += row[x] >> shift;
                ++count;
            }
        }
    }
    if (count == 0) return image->maxValue - 1;
    return (sum / count) << shift;
}

// Walks `count` samples from `first`, `step` apart.
bool LineEndsBorder(const int64_t* first, int64_t step, int32_t count, int64_t mean) {
    for (int32_t i = 0; i < count; ++i) {
        int64_t v = first[i * step];
        if (v == 0) return false;
        if (v > mean) return true;
    }
    return false;
}

struct Borders {
    int32_t top = 0, bottom = 0, left = 0, right = 0;
};

Borders ChannelBorders(const ImageBuffer* image, const int64_t* plane, int64_t mean) {
    const int32_t w = image->width, h = image->height;
    const int64_t stride = image->stride;
    Borders b;
    while (b.top < h && !LineEndsBorder(plane + b.top * stride, 1, w, mean)) ++b.top;
    while (b.bottom < h && !LineEndsBorder(plane + (h - 1 - b.bottom) * stride, 1, w, mean)) ++b.bottom;
    while (b.left < w && !LineEndsBorder(plane + b.left, stride, h, mean)) ++b.left;
    while (b.right < w && !LineEndsBorder(plane + (w - 1 - b.right), stride, h, mean)) ++b.right;
    return b;
}

}  // namespace

bool File_DetectStackingArtefacts(const ImageBuffer* image, ArtefactBox* box) {
    Borders widest;
    for (const int64_t* plane : {image->red, image->green, image->blue}) {
        Borders b = ChannelBorders(image, plane, ChannelMean(image, plane));
        widest.top = std::max(widest.top, b.top);
        widest.bottom = std::max(widest.bottom, b.bottom);
        widest.left = std::max(widest.left, b.left);
        widest.right = std::max(widest.right, b.right);
    }
    ArtefactBox found;
    found.left = widest.left;
    found.top = widest.top;
    found.right = image->width - widest.right;
    found.bottom = image->height - widest.bottom;
    if (box) *box = found;
    return found.left > 0 || found.top > 0 || found.right < image->width || found.bottom < image->height;
}
