// The portable quarter turn, and the choice between it and the AVX-512 one.
#include "modules/rotate/Rotate_Quarter.h"

#include <algorithm>

namespace {

// Square tiles keep both the rows read and the rows written in the cache.
constexpr int32_t kTile = 64;

}  // namespace

void RotateQuarter_Band(const RotateQuarterBand& b) {
    for (int32_t y0 = b.y0; y0 < b.y1; y0 += kTile) {
        const int32_t y1 = std::min(b.y1, y0 + kTile);
        for (int32_t x0 = 0; x0 < b.outWidth; x0 += kTile) {
            const int32_t x1 = std::min(b.outWidth, x0 + kTile);
            for (int32_t y = y0; y < y1; ++y) {
                int64_t* row = b.out + int64_t{y} * b.outStride;
                for (int32_t x = x0; x < x1; ++x) row[x] = b.in[RotateQuarter_SourceIndex(b, x, y)];
            }
        }
    }
}

RotateQuarterFn RotateQuarter_Best() {
    const RotateQuarterFn fast = RotateQuarter_Avx512();
    return fast ? fast : &RotateQuarter_Band;
}
