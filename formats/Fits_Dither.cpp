// Floyd-Steinberg error diffusion of one plane, rows top to bottom, pixels left
// to right. Each pixel's error goes 7/16 to the right (not from the last
// column), 3/16 down-left (not from the first column), 5/16 down and 1/16
// down-right, the last three only while a row below exists. The down-right push
// is not guarded by column: from the last column it lands, as in one flat array,
// on the first pixel of the row after next, and is dropped only when that lies
// past the end of the plane. The sum order of every cell is part of the result.
//
// Speed: each pixel waits on its left neighbour's error (a chain of a multiply,
// a truncation and a division), so one row alone leaves the processor idle.
// Rows are therefore done in pairs, the lower row two pixels behind the upper
// one: every value the lower row reads is final by then, and every cell still
// receives its shares in the sequential order. The one exception is the first
// cell of the row after the pair, which sequentially gets the upper row's
// wrapped down-right share before the lower row's first two pushes; those two
// are held back and added after the pair, in their order.
#include "formats/Fits_Dither.h"

#include "host/Host_Cpu.h"

#include <bit>
#include <cstddef>

namespace {

inline double Get(const int64_t* p) {
    return std::bit_cast<double>(*p);
}
inline void Add(int64_t* p, double d) {
    *p = std::bit_cast<int64_t>(std::bit_cast<double>(*p) + d);
}

struct Plane {
    int64_t* data;
    size_t width;
    size_t total;
    double minimum;
    double scale;
    int64_t top;
};

// The integer part of x as a double, exactly as converting the truncated
// 64-bit integer back would give it: trunc(x) where the integer exists, and
// -2^63 (the processor's answer for NaN and out-of-range values) elsewhere.
// Computed in floating point it keeps two conversions off the chain.
inline double TruncatedAsDouble(double x) {
    if (x >= -9223372036854775808.0 && x < 9223372036854775808.0) return __builtin_trunc(x);
    return -9223372036854775808.0;
}

// Quantises the pixel at flat index i (column x, with or without a row below)
// and pushes its error. The push to the right travels in `carry` instead of
// through memory: on entry it holds the left neighbour's share (unused at
// x == 0), which is added after the shares from the row above, as it would be
// in memory; on exit this pixel's share. With `held` set, the pushes into the
// first cell of the next row are appended there instead of added.
inline void Step(const Plane& p, size_t i, size_t x, bool below, double& carry, double* held = nullptr,
                 int* heldCount = nullptr) {
    int64_t* t = p.data;
    const size_t w = p.width;
    const double cell = x > 0 ? Get(t + i) + carry : Get(t + i);
    const double v = cell - p.minimum;
    const double product = v * p.scale;
    const double e = v - TruncatedAsDouble(product) / p.scale;
    if (x + 1 < w) carry = e * 0.4375;
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
    const int64_t q = Fits_TruncateToInt64(product);
    t[i] = q < 0 ? 0 : q > p.top ? p.top : q;
}

void SequentialRow(const Plane& p, size_t y, bool below) {
    const size_t start = y * p.width;
    double carry = 0.0;
    for (size_t x = 0; x < p.width; ++x) Step(p, start + x, x, below, carry);
}

}  // namespace

HOST_HOT_LOOP void Fits_DiffusePlane(int64_t* plane, int32_t width, int32_t height, double minimum,
                                     double scale, int64_t top) {
    if (width <= 0 || height <= 0) return;
    const size_t w = static_cast<size_t>(width);
    const size_t h = static_cast<size_t>(height);
    const Plane p{plane, w, w * h, minimum, scale, top};
    size_t y = 0;
    if (w >= 4) {
        for (; y + 1 < h; y += 2) {
            const size_t upper = y * w;
            const size_t lower = upper + w;
            const bool lowerHasBelow = y + 2 < h;
            double held[2];
            int heldCount = 0;
            double upperCarry = 0.0, lowerCarry = 0.0;
            Step(p, upper, 0, true, upperCarry);
            Step(p, upper + 1, 1, true, upperCarry);
            Step(p, upper + 2, 2, true, upperCarry);
            Step(p, lower, 0, lowerHasBelow, lowerCarry, held, &heldCount);
            Step(p, upper + 3, 3, true, upperCarry);
            Step(p, lower + 1, 1, lowerHasBelow, lowerCarry, held, &heldCount);
            for (size_t x = 4; x < w; ++x) {
                Step(p, upper + x, x, true, upperCarry);
                Step(p, lower + x - 2, x - 2, lowerHasBelow, lowerCarry);
            }
            Step(p, lower + w - 2, w - 2, lowerHasBelow, lowerCarry);
            Step(p, lower + w - 1, w - 1, lowerHasBelow, lowerCarry);
            for (int k = 0; k < heldCount; ++k) Add(plane + lower + w, held[k]);
        }
    }
    for (; y < h; ++y) SequentialRow(p, y, y + 1 < h);
}
