// Images compared whole for the tracking and history tests, and the history
// tests' states and folder of their own.
#pragma once

#include "image/History.h"

#include "host/Host.h"
#include "host/Host_Path.h"
#include "support/Files.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;

// Noisy content at `depth` bits; mono makes the three planes alike.
inline ImagePtr MakeImage(int32_t width, int32_t height, int depth, bool mono, uint32_t seed) {
    ImagePtr image = MakeImage(width, height, depth, [=](int32_t x, int32_t y, int c) {
        const uint64_t i = (uint64_t(y) * uint64_t(width) + uint64_t(x)) * 3 + uint64_t(mono ? 0 : c);
        return int64_t(TestHash(i + (uint64_t(seed) << 40)) >> (64 - depth));
    });
    image->mono = mono;
    return image;
}

// Same header, and the same samples in all three planes.
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
    // The folder's name is not ASCII, as a user folder often is ("Jürgen"):
    // the program's UTF-8 names must reach the system as such on Windows too.
    void SetUp() override {
        ASSERT_TRUE(Host_SelectBackend("headless"));
        std::filesystem::create_directory(dir_.Path() / Host_Path("J\u00FCrgen_\u661F"));
    }

    std::string Folder() const { return Host_PathText(dir_.Path()) + "/J\u00FCrgen_\u661F/"; }
    std::string File(const char* name) const { return Folder() + name; }

    TempDir dir_;
};
