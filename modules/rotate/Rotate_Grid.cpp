// The levelling grid: line placement and the pixels a line changes.
#include "modules/rotate/Rotate_Grid.h"

#include "image/Image.h"

#include <algorithm>
#include <vector>

namespace {

constexpr int32_t kCellsPerView = 8;
constexpr int32_t kMinCell = 32, kMaxCell = 160, kUnknownCell = 64;  // screen pixels

// Whether each of `n` positions lies on a line: lines through n / 2 and every
// `step` either side, each `width` wide and centred on its position.
std::vector<bool> OnLines(int32_t n, const RotateGridSpacing& g) {
    std::vector<bool> on(size_t(std::max(n, 0)), false);
    const int32_t centre = n / 2;
    const int32_t first = centre - (centre / g.step) * g.step;
    for (int32_t p = first; p < n; p += g.step)
        for (int32_t i = p - g.width / 2; i < p - g.width / 2 + g.width; ++i)
            if (i >= 0 && i < n) on[size_t(i)] = true;
    return on;
}

}  // namespace

RotateGridSpacing Rotate_GridSpacing(int32_t zoom, int32_t viewWidth, int32_t viewHeight) {
    zoom = std::max(zoom, 1);
    const int32_t shorter = std::min(viewWidth, viewHeight);
    const int32_t cell = shorter > 0 ? std::clamp(shorter / kCellsPerView, kMinCell, kMaxCell) : kUnknownCell;
    const int32_t width = (100 + zoom - 1) / zoom;
    return {std::max(int32_t(int64_t{cell} * 100 / zoom), 2 * width), width};
}

void Rotate_DrawGrid(ImageBuffer* shown, const RotateGridSpacing& spacing) {
    if (!shown || !shown->red || spacing.step < 1 || spacing.width < 1) return;
    const std::vector<bool> column = OnLines(shown->width, spacing), row = OnLines(shown->height, spacing);
    const bool colour = shown->green && shown->blue && shown->green != shown->red;
    int64_t* planes[3] = {shown->red, colour ? shown->green : nullptr, colour ? shown->blue : nullptr};
    const int64_t max = shown->maxValue, half = max / 2;
    for (int32_t y = 0; y < shown->height; ++y) {
        const size_t at = size_t(y) * size_t(shown->stride);
        for (int32_t x = 0; x < shown->width; ++x) {
            if (!row[size_t(y)] && !column[size_t(x)]) continue;
            const size_t i = at + size_t(x);
            const int64_t level = colour ? (planes[0][i] + planes[1][i] + planes[2][i]) / 3 : planes[0][i];
            for (int64_t* plane : planes)
                if (plane) plane[i] = level < half ? plane[i] + (max - plane[i]) / 2 : plane[i] / 2;
        }
    }
}
