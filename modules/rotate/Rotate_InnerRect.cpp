// Rotate_InnerRect: each canvas row's run of pixels that the rotation fills,
// found with the kernel's own walk, then the largest rectangle over runs of
// rows. Working from the kernel's arithmetic rather than the geometry of the
// turned rectangle keeps the answer right to the last pixel.
#include "modules/rotate/Rotate_InnerRect.h"

#include "modules/rotate/Rotate_Kernel.h"

#include <algorithm>
#include <vector>

namespace {

struct Run {
    int32_t first, last;  // first > last: the row has no filled pixel
};

// The filled run of every canvas row. A row steps through the source by
// (+c, -s) from column 0, as the kernel walks it, and the kernel samples a
// position inside (-1, W) x (-1, H); the filled pixels of a row are one run,
// the turned image being convex.
std::vector<Run> FilledRuns(int32_t width, int32_t height, double degrees, int32_t w, int32_t h) {
    double c, s;
    Rotate_SinCos(degrees, &c, &s);
    const double halfW = width / 2.0, halfH = height / 2.0, fw = width, fh = height;
    std::vector<Run> runs(size_t(h), Run{0, -1});
    for (int32_t y = 0; y < h; ++y) {
        const double u = 0 - w / 2.0, v = y - h / 2.0;
        double sx = halfW + u * c + v * s, sy = halfH - u * s + v * c;
        Run& run = runs[size_t(y)];
        run.first = w;
        for (int32_t x = 0; x < w; ++x, sx += c, sy -= s)
            if (sx > -1.0 && sx < fw && sy > -1.0 && sy < fh) {
                run.first = std::min(run.first, x);
                run.last = x;
            }
    }
    return runs;
}

}  // namespace

RotateRect Rotate_InnerRect(int32_t width, int32_t height, double degrees) {
    if (width < 1 || height < 1) return {0, 0, -1, -1};
    if (degrees == 0 || degrees == 180) return {0, 0, width - 1, height - 1};
    if (degrees == 90 || degrees == 270) return {0, 0, height - 1, width - 1};
    int32_t w, h;
    Rotate_OutputSize(width, height, degrees, &w, &h);
    if (w < 1 || h < 1) return {0, 0, -1, -1};
    const std::vector<Run> runs = FilledRuns(width, height, degrees, w, h);
    // Every band of rows from y0 down, narrowed to what all its rows fill.
    RotateRect best{0, 0, -1, -1};
    int64_t bestArea = 0;
    for (int32_t y0 = 0; y0 < h; ++y0) {
        int32_t left = runs[size_t(y0)].first, right = runs[size_t(y0)].last;
        for (int32_t y1 = y0; y1 < h && left <= right; ++y1) {
            left = std::max(left, runs[size_t(y1)].first);
            right = std::min(right, runs[size_t(y1)].last);
            const int64_t area = int64_t{right - left + 1} * (y1 - y0 + 1);
            if (right >= left && area > bestArea) {
                bestArea = area;
                best = {left, y0, right, y1};
            }
        }
    }
    return best;
}
