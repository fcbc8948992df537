// One row segment of the general rotation: output pixel i samples the source
// bilinearly at (xs[i], ys[i]) with SampleBilinear_Plane's arithmetic, black
// outside. The portable form and an AVX-512 form give the same bits; the
// rotation asks for the best one this processor runs once per call.
#pragma once

#include <cstdint>

struct RotateSpanSource {
    const int64_t* planes[3];
    int32_t width, height, stride;
    int64_t maxValue;
};

using RotateSpanFn = void (*)(const RotateSpanSource& source, const double* xs, const double* ys, int32_t n,
                              int64_t* const out[3]);

void RotateSpan_Sample(const RotateSpanSource& source, const double* xs, const double* ys, int32_t n,
                       int64_t* const out[3]);

// Null where the build or the processor has no AVX-512 (F and DQ).
RotateSpanFn RotateSpan_Avx512();

// The AVX-512 form where there is one, else the portable one.
RotateSpanFn RotateSpan_Best();
