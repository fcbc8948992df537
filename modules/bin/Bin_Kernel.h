// BinImage: reduces an image by a free scale factor s (0 < s <= 1), each output
// pixel made from several source pixels. When 1/s is an exact integer the box
// path averages whole blocks; otherwise the planes are prefiltered with the
// shared Gaussian of half-width log2(1/s) and resampled bilinearly. The result
// keeps the source's depth; binning never changes an image's brightness.
#pragma once

#include "host/KernelControl.h"

#include <cstdint>

struct ImageBuffer;

struct BinSettings {
    double scale = 0.5;  // s: the output is trunc(W * s) x trunc(H * s)
};

// Output size trunc(W * s) x trunc(H * s).
void Bin_OutputSize(int32_t width, int32_t height, double s, int32_t* outWidth, int32_t* outHeight);

// Prefilter half-width for the resampling path: log2(max(q, 1)) worked out as
// 1.4426950408889634 * ln(100 / p) with p = 100 / max(q, 1).
double Bin_PrefilterRadius(double q);

// True when the box path is taken: q = 1 / s has no fractional part.
bool Bin_IsBoxPath(double s);

// New image, or null when s <= 0, the output would be empty, or the run was
// cancelled (tested once per output row).
ImageBuffer* BinImage(const ImageBuffer* image, double s, const KernelControl* control);
// The module's entry: BinImage with the settings' scale.
ImageBuffer* Bin_Run(const ImageBuffer* image, const BinSettings& settings, const KernelControl* control);
