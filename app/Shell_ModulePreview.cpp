// The quick preview of a large image: a copy binned to about the view's size,
// on which a module's step takes a fraction of the time; positions in image
// pixels (a RoI, a rectangle) are scaled to it.
#include "app/Shell_Module.h"

#include <algorithm>
#include <vector>

ImagePtr Shell_BinForPreview(const ImageBuffer& image, int32_t factor) {
    const int32_t w = (image.width + factor - 1) / factor, h = (image.height + factor - 1) / factor;
    ImagePtr out(Image_Create(w, h));
    out->bitDepth = image.bitDepth;
    out->maxValue = image.maxValue;
    out->mono = image.mono;
    const int64_t* from[3] = {image.red, image.green ? image.green : image.red,
                              image.blue ? image.blue : image.red};
    int64_t* to[3] = {out->red, out->green, out->blue};
    std::vector<int64_t> sums(static_cast<size_t>(w));
    std::vector<int32_t> counts(static_cast<size_t>(w));
    for (int c = 0; c < 3; ++c)
        for (int32_t by = 0; by < h; ++by) {
            std::fill(sums.begin(), sums.end(), 0);
            std::fill(counts.begin(), counts.end(), 0);
            for (int32_t y = by * factor; y < std::min(image.height, (by + 1) * factor); ++y) {
                const int64_t* row = from[c] + size_t(y) * size_t(image.stride);
                for (int32_t bx = 0, x = 0; bx < w; ++bx)  // block by block: no division per sample
                    for (const int32_t end = std::min(image.width, x + factor); x < end; ++x) {
                        sums[size_t(bx)] += row[x];
                        ++counts[size_t(bx)];
                    }
            }
            int64_t* row = to[c] + size_t(by) * size_t(out->stride);
            for (int32_t bx = 0; bx < w; ++bx) row[bx] = sums[size_t(bx)] / counts[size_t(bx)];
        }
    return out;
}

void Shell_PrepareSmallPreview(ShellModule* m, const ImageBuffer& image, int32_t viewWidth,
                               int32_t viewHeight) {
    m->small.reset();
    m->smallResult.reset();
    m->smallFactor = 1;
    if (viewWidth <= 0 || viewHeight <= 0) return;
    const int32_t factor = std::min(image.width / viewWidth, image.height / viewHeight);
    if (factor < 2) return;
    m->smallFactor = factor;
    m->small = Shell_BinForPreview(image, factor);
}

ModuleParamsBuffer Shell_SmallParams(const ShellModule& m) {
    ModuleParamsBuffer scaled = m.params;
    for (const ModuleParam& row : m.def->params) {
        if (row.extent == ParamExtent::Fixed) continue;
        const int32_t v = ModuleParams_Get(row, m.params.bytes);
        if (v != kParamLast) ModuleParams_Set(row, scaled.bytes, v / m.smallFactor);
    }
    return scaled;
}
