// One plane of a lossless quarter turn, a band of output rows at a time:
// output (x, y) takes source (y, H - 1 - x) at one quarter, (W - 1 - x,
// H - 1 - y) at two and (W - 1 - y, x) at three. The portable form copies by
// square tiles; the AVX-512 form transposes 8 x 8 blocks in registers and
// writes whole cache lines past the caches. Both give the same planes.
#pragma once

#include <cstdint>

struct RotateQuarterBand {
    const int64_t* in;
    int32_t inWidth, inHeight, inStride;
    int64_t* out;
    int32_t outWidth, outStride;
    int turns;       // 1, 2 or 3
    int32_t y0, y1;  // output rows y0 .. y1 - 1, every column
};

// Source element of output (x, y).
inline int64_t RotateQuarter_SourceIndex(const RotateQuarterBand& b, int32_t x, int32_t y) {
    switch (b.turns) {
        case 1:
            return int64_t{b.inHeight - 1 - x} * b.inStride + y;
        case 2:
            return int64_t{b.inHeight - 1 - y} * b.inStride + (b.inWidth - 1 - x);
        default:
            return int64_t{x} * b.inStride + (b.inWidth - 1 - y);
    }
}

using RotateQuarterFn = void (*)(const RotateQuarterBand& band);

void RotateQuarter_Band(const RotateQuarterBand& band);

// Null where the build or the processor has no AVX-512 (F).
RotateQuarterFn RotateQuarter_Avx512();

RotateQuarterFn RotateQuarter_Best();
