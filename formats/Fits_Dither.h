// Quantisation of one plane of real values to integers by Floyd-Steinberg
// error diffusion, in exact double arithmetic and a fixed order.
#pragma once

#include <cstdint>

// `plane` holds width x height doubles (stored bit for bit in the int64 slots)
// and receives the quantised integers in place, each held to 0..top as it is
// stored (a quantised cell never changes again, so this is the final clamp).
// minimum is subtracted first; scale multiplies.
void Fits_DiffusePlane(int64_t* plane, int32_t width, int32_t height, double minimum, double scale,
                       int64_t top);

// Truncation towards zero to 64 bits as the processor does it: values outside
// the range (and NaN) give INT64_MIN instead of undefined behaviour.
inline int64_t Fits_TruncateToInt64(double x) {
    if (x >= -9223372036854775808.0 && x < 9223372036854775808.0) return static_cast<int64_t>(x);
    return INT64_MIN;
}
