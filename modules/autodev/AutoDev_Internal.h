// Stages of the AutoDev computation shared between its source files and tests.
#pragma once

#include "host/KernelControl.h"
#include "modules/autodev/AutoDev_Settings.h"

#include <cstdint>
#include <vector>

inline constexpr int32_t kAutoDevDepth = 24;
inline constexpr int32_t kAutoDevMax = (1 << kAutoDevDepth) - 1;
inline constexpr int32_t kAutoDevValues = 1 << kAutoDevDepth;

// Exact histograms over the 24-bit luminance values: counts and weights, with
// the range of values that occur and, optionally, the list of them in
// ascending order; with a list, entries of values not in it are never read
// (the kernel clears only the listed ones), without one the tables are zero
// outside the values that occur.
struct AutoDevHistogram {
    const uint32_t* counts;
    const int64_t* weights;
    int32_t minValue;
    int32_t maxValue;
    const int32_t* values = nullptr;
    int64_t valueCount = 0;
};

struct AutoDevSegment {
    int32_t first;
    int32_t last;
    int64_t weight;
    int64_t ya;
    int64_t yb;
};

// Segments of about (pixelCount >> 12) pixels each, closed when the running
// count exceeds N, the last ending at 2^24 - 1, with their output ranges.
std::vector<AutoDevSegment> AutoDev_Segments(const AutoDevHistogram& histogram, int64_t pixelCount);

// Curve value of a 24-bit input inside the segment (the identity when the
// total weight is 0, signalled by an empty segment list).
inline int64_t AutoDev_CurveValue(const AutoDevSegment& s, int64_t v) {
    if (s.last == s.first) return s.ya;
    return ((s.last - v) * s.ya + (v - s.first) * s.yb) / (s.last - s.first);
}

// Tone blend of one sample at the image's depth (maximum m), p3 != 0.
int64_t AutoDev_ToneBlend(int64_t v, int64_t m, double p3);

// For every 24-bit value that occurs (the histogram's list, which it needs),
// the final grey sample at the image's depth: curve, normalise
// (Image_SetBitDepth from 24 bits, clamp), tone blend. `out` has 2^24
// entries; only the occurring ones are written.
void AutoDev_BuildOutputMap(const AutoDevHistogram& histogram, int64_t pixelCount,
                            const AutoDevSettings& settings, int bitDepth, int64_t maxValue, int64_t* out);

// Weight map from the blended luminance: reshaped by p2 when p2 != 1 (in
// place), then the weighted mean absolute difference to the 12 neighbours.
// Returns false when cancelled.
bool AutoDev_WeightMap(int32_t* blended, int32_t* weight, int32_t width, int32_t height, int32_t stride,
                       double p2, int32_t max, const KernelControl* control);
