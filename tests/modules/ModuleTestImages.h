// Small images for the module tests: made from a function of (x, y, channel),
// compared plane by plane.
#pragma once

#include "image/Image.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>

template <class F>
ImagePtr MakeImage(int32_t width, int32_t height, int bitDepth, F value) {
    ImagePtr image(Image_Create(width, height));
    image->bitDepth = static_cast<uint16_t>(bitDepth);
    image->maxValue = (int64_t{1} << bitDepth) - 1;
    int64_t* planes[3] = {image->red, image->green, image->blue};
    for (int c = 0; c < 3; ++c)
        for (int32_t y = 0; y < height; ++y)
            for (int32_t x = 0; x < width; ++x) planes[c][int64_t{y} * image->stride + x] = value(x, y, c);
    return image;
}

inline int64_t Pixel(const ImageBuffer* image, int c, int32_t x, int32_t y) {
    const int64_t* planes[3] = {image->red, image->green, image->blue};
    return planes[c][int64_t{y} * image->stride + x];
}

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

// Sets PELLUCIDA_WORKERS for the life of the object.
class WorkerCountScope {
public:
    explicit WorkerCountScope(int n) { setenv("PELLUCIDA_WORKERS", std::to_string(n).c_str(), 1); }
    ~WorkerCountScope() { unsetenv("PELLUCIDA_WORKERS"); }
    WorkerCountScope(const WorkerCountScope&) = delete;
    WorkerCountScope& operator=(const WorkerCountScope&) = delete;
};

// Deterministic pseudo-random samples.
inline uint64_t TestHash(uint64_t x) {
    x ^= x >> 33;
    x *= 0xff51afd7ed558ccdULL;
    x ^= x >> 33;
    x *= 0xc4ceb9fe1a85ec53ULL;
    x ^= x >> 33;
    return x;
}
