// Floyd-Steinberg error diffusion of one plane, rows top to bottom, pixels left
// to right. Each pixel's error goes 7/16 to the right (not from the last
// column), 3/16 down-left (not from the first column), 5/16 down and 1/16
// down-right, the last three only while a row below exists. The down-right push
// is not guarded by column: from the last column it lands, as in one flat array,
// on the first pixel of the row after next, and is dropped only when that lies
// past the end of the plane. The sum order of every cell is part of the result.
//
// Speed: each pixel waits on its left neighbour's error (a chain of a multiply,
// two conversions and a division), so one row alone leaves the processor idle.
// Rows are therefore done in pairs, the lower row two pixels behind the upper
// one: every value the lower row reads is final by then, and every cell still
// receives its shares in the sequential order. The one exception is the first
// cell of the row after the pair, which sequentially gets the upper row's
// wrapped down-right share before the lower row's first two pushes; those two
// are held back and added after the pair, in their order.
#include "formats/Fits_Dither.h"

#include <bit>
#include <cstddef>

namespace {

inline double Get(const int64_t* p) { return std::bit_cast<double>(*p); }
inline void Add(int64_t* p, double d) { *p = std::bit_cast<int64_t>(std::bit_cast<double>(*p) + d); }

struct Plane {
    int64_t* data;
    size_t width;
    size_t total;
    double minimum;
    double scale;
};

// Quantises the pixel at flat index i (column x, with or without a row below)
// and pushes its error. With `held` set, the pushes into the first cell of the
// next row are appended there instead of added.
inline void Step(const Plane& p, size_t i, size_t x, bool below, double* held = nullptr, int* heldCount = nullptr) {
    int64_t* t = p.data;
    const size_t w = p.width;
    const double v = Get(t + i) - p.minimum;
    const int64_t q = Fits_TruncateToInt64(v * p.scale);
    const double e = v - static_cast<double>(q) / p.scale;
    if (x + 1 < w) Add(t + i + 1, e * 0.4375);
    if (below) {
        if (x > 0) {
            if (held && x == 1)
                held[(*heldCount)++] = e * 0.1875;
            else
                Add(t + i + w - 1, e * 0.1875);
        }
        if (held && x == 0)
            held[(*heldCount)++] = e * 0.3125;
        else
            Add(t + i + w, e * 0.3125);
        if (i + w + 1 < p.total) Add(t + i + w + 1, e * 0.0625);
    }
    t[i] = q;
}

void SequentialRow(const Plane& p, size_t y, bool below) {
    const size_t start = y * p.width;
    for (size_t x = 0; x < p.width; ++x) Step(p, start + x, x, below);
}

}  // namespace

void Fits_DiffusePlane(int64_t* plane, int32_t width, int32_t height, double minimum, double scale) {
    if (width <= 0 || height <= 0) return;
    const size_t w = static_cast<size_t>(width);
    const size_t h = static_cast<size_t>(height);
    const Plane p{plane, w, w * h, minimum, scale};
    size_t y = 0;
    if (w >= 4) {
        for (; y + 1 < h; y += 2) {
            const size_t upper = y * w;
            const size_t lower = upper + w;
            const bool lowerHasBelow = y + 2 < h;
            double held[2];
            int heldCount = 0;
            Step(p, upper, 0, true);
            Step(p, upper + 1, 1, true);
            Step(p, upper + 2, 2, true);
            Step(p, lower, 0, lowerHasBelow, held, &heldCount);
            Step(p, upper + 3, 3, true);
            Step(p, lower + 1, 1, lowerHasBelow, held, &heldCount);
            for (size_t x = 4; x < w; ++x) {
                Step(p, upper + x, x, true);
                Step(p, lower + x - 2, x - 2, lowerHasBelow);
            }
            Step(p, lower + w - 2, w - 2, lowerHasBelow);
            Step(p, lower + w - 1, w - 1, lowerHasBelow);
            for (int k = 0; k < heldCount; ++k) Add(plane + lower + w, held[k]);
        }
    }
    for (; y < h; ++y) SequentialRow(p, y, y + 1 < h);
}
