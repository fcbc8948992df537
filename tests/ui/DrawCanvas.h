// Shared by the painter and font tests: an in-memory surface, the committed
// font entry, and golden-image comparison with evidence on failure.
#pragma once

#include "support/Files.h"
#include "ui/draw/Draw_Surface.h"
#include "ui/font/Font.h"

#include <gtest/gtest.h>
#include <lodepng.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

struct DrawCanvas {
    int32_t width, height, pixelsPerRow;
    std::vector<uint32_t> pixels;
    Surface surface;

    // Rows are padded, as a framebuffer's may be, so that strides are exercised.
    DrawCanvas(int32_t w, int32_t h, uint32_t fill = 0)
        : width(w),
          height(h),
          pixelsPerRow(w + 7),
          pixels(size_t(w + 7) * h, fill),
          surface(Draw_MakeSurface(pixels.data(), w + 7, w, h)) {}
    uint32_t At(int32_t x, int32_t y) const { return pixels[size_t(y) * pixelsPerRow + x]; }
    uint32_t& At(int32_t x, int32_t y) { return pixels[size_t(y) * pixelsPerRow + x]; }
    // The padding right of each row, which no drawing may touch.
    bool PaddingIs(uint32_t value) const {
        for (int32_t y = 0; y < height; ++y)
            for (int32_t x = width; x < pixelsPerRow; ++x)
                if (At(x, y) != value) return false;
        return true;
    }
};

inline bool DrawTest_Inside(const DrawRect& r, int32_t x, int32_t y) {
    return x >= r.x && x < r.x + r.width && y >= r.y && y < r.y + r.height;
}

// Every pixel of the canvas is expected(x, y); the first that is not is named.
template <class F>
void DrawTest_ExpectPixels(const DrawCanvas& c, F expected) {
    for (int32_t y = 0; y < c.height; ++y)
        for (int32_t x = 0; x < c.width; ++x) ASSERT_EQ(c.At(x, y), expected(x, y)) << "at " << x << "," << y;
}

inline std::filesystem::path DrawTest_SourceDir() {
    return PELLUCIDA_TEST_SOURCE_DIR;
}

// The font entry the repository ships (resources/font.fnt).
inline std::vector<uint8_t> DrawTest_FontBytes() {
    return ReadFileBytes(DrawTest_SourceDir() / ".." / "resources" / "font.fnt");
}

inline const Font* DrawTest_Font() {
    static const std::unique_ptr<Font> font = [] {
        const std::vector<uint8_t> bytes = DrawTest_FontBytes();
        return Font_Load(bytes.data(), bytes.size());
    }();
    return font.get();
}

inline std::vector<uint8_t> DrawTest_Rgb(const DrawCanvas& c) {
    std::vector<uint8_t> rgb(size_t(c.width) * c.height * 3);
    for (int32_t y = 0; y < c.height; ++y)
        for (int32_t x = 0; x < c.width; ++x) {
            const uint32_t p = c.At(x, y);
            uint8_t* o = &rgb[(size_t(y) * c.width + x) * 3];
            o[0] = uint8_t(p >> 16), o[1] = uint8_t(p >> 8), o[2] = uint8_t(p);
        }
    return rgb;
}

// Compares the canvas with tests/golden/<name>.png: each channel may differ by
// `tolerance`. With PELLUCIDA_REBASELINE=1 the golden file is rewritten
// instead (look at it before committing). On failure the rendering and a
// difference picture go to the temporary folder and the first bad pixel and
// the count are reported.
inline void DrawTest_CompareGolden(const DrawCanvas& c, const std::string& name, int tolerance) {
    const std::filesystem::path golden = DrawTest_SourceDir() / "golden" / (name + ".png");
    const std::vector<uint8_t> rgb = DrawTest_Rgb(c);
    if (const char* r = std::getenv("PELLUCIDA_REBASELINE"); r && std::string(r) == "1") {
        std::filesystem::create_directories(golden.parent_path());
        ASSERT_EQ(lodepng::encode(golden.string(), rgb, c.width, c.height, LCT_RGB), 0u);
        GTEST_SKIP() << "rebaselined " << golden;
    }
    std::vector<uint8_t> expected;
    unsigned w = 0, h = 0;
    ASSERT_EQ(lodepng::decode(expected, w, h, golden.string(), LCT_RGB, 8), 0u) << "cannot read " << golden;
    ASSERT_EQ(int32_t(w), c.width);
    ASSERT_EQ(int32_t(h), c.height);
    size_t bad = 0, first = SIZE_MAX;
    std::vector<uint8_t> diff(rgb.size(), 0);
    for (size_t i = 0; i < rgb.size(); ++i) {
        const int d = std::abs(int(rgb[i]) - int(expected[i]));
        if (d > tolerance) {
            if (first == SIZE_MAX) first = i / 3;
            ++bad;
            diff[i] = 255;
        }
    }
    if (bad == 0) return;
    const std::filesystem::path out = std::filesystem::temp_directory_path() / "pellucida-golden";
    std::filesystem::create_directories(out);
    std::string flat = name;
    for (char& ch : flat)
        if (ch == '/') ch = '_';
    lodepng::encode((out / (flat + ".actual.png")).string(), rgb, c.width, c.height, LCT_RGB);
    lodepng::encode((out / (flat + ".diff.png")).string(), diff, c.width, c.height, LCT_RGB);
    ADD_FAILURE() << name << ": " << bad << " channel values differ by more than " << tolerance
                  << "; first at (" << first % c.width << ", " << first / c.width << "); see " << out;
}
