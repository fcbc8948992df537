// Test images made from a function of (x, y, channel) or decoded from bytes,
// their samples, and deterministic pseudo-random numbers to fill them with.
#pragma once

#include "image/Image.h"

#include <cstdint>
#include <vector>

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

// Bytes decoded through a reader's memory entry point.
template <ImageBuffer* (*Read)(const uint8_t*, size_t)>
ImagePtr ReadBytes(const std::vector<uint8_t>& bytes) {
    return ImagePtr(Read(bytes.data(), bytes.size()));
}

inline int64_t Pixel(const ImageBuffer* image, int c, int32_t x, int32_t y) {
    const int64_t* planes[3] = {image->red, image->green, image->blue};
    return planes[c][int64_t{y} * image->stride + x];
}

// Deterministic pseudo-random samples.
inline uint64_t TestHash(uint64_t x) {
    x ^= x >> 33;
    x *= 0xff51afd7ed558ccdULL;
    x ^= x >> 33;
    x *= 0xc4ceb9fe1a85ec53ULL;
    x ^= x >> 33;
    return x;
}
