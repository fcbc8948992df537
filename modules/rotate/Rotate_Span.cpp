// The portable span sampler, and the choice between it and the AVX-512 one.
#include "modules/rotate/Rotate_Span.h"

#include "host/Host_Cpu.h"
#include "modules/common/SampleBilinear.h"

HOST_HOT_LOOP void RotateSpan_Sample(const RotateSpanSource& source, const double* xs, const double* ys,
                                     int32_t n, int64_t* const out[3]) {
    const double w = source.width, h = source.height;
    for (int32_t i = 0; i < n; ++i) {
        const double sx = xs[i], sy = ys[i];
        if (!(sx > -1.0 && sx < w && sy > -1.0 && sy < h)) {
            out[0][i] = out[1][i] = out[2][i] = 0;
            continue;
        }
        const int32_t ix = static_cast<int32_t>(sx), iy = static_cast<int32_t>(sy);
        const double tx = sx - ix, ty = sy - iy;
        const int32_t dx = ix + 1 < source.width ? 1 : 0, dy = iy + 1 < source.height ? 1 : 0;
        for (int c = 0; c < 3; ++c)
            out[c][i] = SampleBilinear_Plane(source.planes[c], source.stride, ix, iy, dx, dy, tx, ty,
                                             source.maxValue);
    }
}

RotateSpanFn RotateSpan_Best() {
    const RotateSpanFn fast = RotateSpan_Avx512();
    return fast ? fast : &RotateSpan_Sample;
}
