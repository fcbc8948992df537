// Small images for the module tests: compared plane by plane, and a synthetic
// sky.
#pragma once

#include "image/Image.h"
#include "support/Files.h"
#include "support/TestImages.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>

// First differing sample, or "" when the images are the same size and equal.
inline std::string ImageDifference(const ImageBuffer* a, const ImageBuffer* b) {
    if (a->width != b->width || a->height != b->height)
        return "sizes " + std::to_string(a->width) + "x" + std::to_string(a->height) + " and " +
               std::to_string(b->width) + "x" + std::to_string(b->height);
    for (int c = 0; c < 3; ++c)
        for (int32_t y = 0; y < a->height; ++y)
            for (int32_t x = 0; x < a->width; ++x)
                if (Pixel(a, c, x, y) != Pixel(b, c, x, y))
                    return "channel " + std::to_string(c) + " at (" + std::to_string(x) + "," +
                           std::to_string(y) + "): " + std::to_string(Pixel(a, c, x, y)) + " vs " +
                           std::to_string(Pixel(b, c, x, y));
    return "";
}

// A linear sky at `bitDepth`: a faint per-channel gradient, a nebula lobe,
// stars of several sizes (a few clipped at the maximum) and noise in every
// sample, so that the blur, the weight map and the segments all have work.
inline ImagePtr TestSky(int32_t w, int32_t h, int bitDepth) {
    const double max = std::ldexp(1.0, bitDepth) - 1;
    return MakeImage(w, h, bitDepth, [&](int32_t x, int32_t y, int c) {
        double v = 0.02 + 0.004 * c + 0.01 * x / w + 0.006 * y / h;
        const double nx = (x - 0.4 * w) / (0.25 * w), ny = (y - 0.55 * h) / (0.2 * h);
        v += 0.03 * std::exp(-(nx * nx + ny * ny));
        for (int s = 0; s < 23; ++s) {
            const double sx = double(TestHash(uint64_t(s) * 2 + 1) % uint64_t(w));
            const double sy = double(TestHash(uint64_t(s) * 2 + 2) % uint64_t(h));
            const double sigma = 0.8 + 0.15 * (s % 7);
            const double peak = s < 3 ? 4.0 : 0.9 / (1 + s);
            const double d2 = (x - sx) * (x - sx) + (y - sy) * (y - sy);
            v += peak * (1.0 - 0.1 * c * (s & 1)) * std::exp(-d2 / (2 * sigma * sigma));
        }
        const uint64_t noise = TestHash(uint64_t(y) * 100003 + uint64_t(x) * 7 + uint64_t(c));
        v += (double(noise % 10000) / 10000.0 - 0.5) * 0.004;
        return static_cast<int64_t>(std::clamp(v, 0.0, 1.0) * max);
    });
}
