// Floyd-Steinberg error diffusion of one plane, rows top to bottom, pixels left
// to right. Each pixel's error goes 7/16 to the right (not from the last
// column), 3/16 down-left (not from the first column), 5/16 down and 1/16
// down-right, the last three only while a row below exists. The down-right push
// is not guarded by column: from the last column it lands, as in one flat array,
// on the first pixel of the row after next, and is dropped only when that lies
// past the end of the plane. The sum order of every cell is part of the result,
// so the pushes stay in this order.
#include "formats/Fits_Dither.h"

#include <bit>
#include <cstddef>

namespace {

inline double Get(const int64_t* p) { return std::bit_cast<double>(*p); }
inline void Add(int64_t* p, double d) { *p = std::bit_cast<int64_t>(std::bit_cast<double>(*p) + d); }

}  // namespace

void Fits_DiffusePlane(int64_t* plane, int32_t width, int32_t height, double minimum, double scale) {
    const size_t w = static_cast<size_t>(width);
    const size_t total = w * static_cast<size_t>(height);
    for (int32_t y = 0; y < height; ++y) {
        const bool below = y + 1 < height;
        int64_t* row = plane + static_cast<size_t>(y) * w;
        for (size_t x = 0; x < w; ++x) {
            const double v = Get(row + x) - minimum;
            const int64_t q = Fits_TruncateToInt64(v * scale);
            const double e = v - static_cast<double>(q) / scale;
            if (x + 1 < w) Add(row + x + 1, e * 0.4375);
            if (below) {
                if (x > 0) Add(row + w + x - 1, e * 0.1875);
                Add(row + w + x, e * 0.3125);
                if (static_cast<size_t>(row - plane) + w + x + 1 < total) Add(row + w + x + 1, e * 0.0625);
            }
            row[x] = q;
        }
    }
}
