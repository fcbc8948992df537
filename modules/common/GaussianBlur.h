// The separable Gaussian shared by the processing modules: weight
// exp(-ln 2 * k^2 / r^2) for offset k (r is the half-width at half maximum),
// taps until the weight falls to 1/4096, integer weights (x 256), a horizontal
// then a vertical pass, each normalised by the weights of the taps that lie
// inside the image. Work is split over all processors.
#pragma once

#include "host/KernelControl.h"

#include <cstdint>
#include <vector>

struct GaussianKernel {
    int32_t half = 0;              // taps at offsets -half..half
    std::vector<int32_t> weights;  // 2 * half + 1 integer weights, offset -half first
};

// half is 0 (a plain copy) when r <= 0.2887, where the weight at k = 1 is
// already at or below 1/4096.
GaussianKernel GaussianBlur_MakeKernel(double r);

// Blurs one channel of width x height samples (rows `stride` apart) into `out`
// (same layout; must not alias `in`). Samples in 0..2^37 take the fast path,
// any others an exact but slow one. Returns false when cancelled, leaving
// `out` partly written.
bool GaussianBlur(const int64_t* in, int64_t* out, int32_t width, int32_t height, int32_t stride, double r,
                  const KernelControl* control);

// The same on 32-bit samples in 0..2^24 (the 24-bit working planes of AutoDev).
bool GaussianBlur(const int32_t* in, int32_t* out, int32_t width, int32_t height, int32_t stride, double r,
                  const KernelControl* control);
