// Images, states and a folder of their own for the history tests.
#pragma once

#include "image/History.h"

#include "host/Host.h"
#include "support/Files.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;

// Noisy content at `depth` bits; mono makes the three planes alike.
inline ImagePtr MakeImage(int32_t width, int32_t height, int depth, bool mono, uint32_t seed) {
    ImagePtr image(Image_Create(width, height));
    image->bitDepth = static_cast<uint16_t>(depth);
    image->maxValue = (int64_t{1} << depth) - 1;
    image->mono = mono;
    uint64_t state = 0x9E3779B97F4A7C15ull * (seed + 1);
    for (int64_t* plane : {image->red, image->green, image->blue}) {
        for (int64_t i = 0; i < int64_t{width} * height; ++i) {
            state = state * 6364136223846793005ull + 1442695040888963407ull;
            plane[i] = mono && plane != image->red ? image->red[i] : int64_t(state >> 20) & image->maxValue;
        }
    }
    return image;
}

inline bool SameImage(const ImageBuffer& a, const ImageBuffer& b) {
    const size_t n = size_t(a.width) * size_t(a.height) * 8;
    return a.width == b.width && a.height == b.height && a.bitDepth == b.bitDepth &&
           a.maxValue == b.maxValue && a.mono == b.mono && std::memcmp(a.red, b.red, n) == 0 &&
           std::memcmp(a.green, b.green, n) == 0 && std::memcmp(a.blue, b.blue, n) == 0;
}

inline HistoryState State(const char* caption, int64_t timeMs) {
    HistoryState state;
    state.caption = caption;
    state.name = "/data/M 94.tif";
    state.timeMs = timeMs;
    return state;
}

class History : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(Host_SelectBackend("headless")); }

    std::string Folder() const { return dir_.Path().string() + "/"; }
    std::string File(const char* name) const { return (dir_.Path() / name).string(); }

    TempDir dir_;
};
