// Shared by the painter and font tests: an in-memory surface, the committed
// font entry, and golden-image comparison.
#pragma once

#include "host/Host_Os.h"
#include "support/Files.h"
#include "support/Golden.h"
#include "ui/draw/Draw_Surface.h"
#include "ui/font/Font.h"

#include <gtest/gtest.h>
#include <lodepng.h>

#include <cstdint>
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

// The font entry the repository ships (resources/font.fnt).
inline std::vector<uint8_t> DrawTest_FontBytes() {
    return ReadFileBytes(std::filesystem::path(PELLUCIDA_TEST_SOURCE_DIR) / ".." / "resources" / "font.fnt");
}

inline const Font* DrawTest_Font() {
    static const std::vector<uint8_t> bytes = DrawTest_FontBytes();
    static const std::unique_ptr<Font> font = Font_Load(bytes.data(), bytes.size());
    return font.get();
}

// Where a rendering is written to be compared with tests/golden/<name>/expected.png:
// beside the test program, so that builds running side by side keep apart, and
// left there to be looked at when the comparison fails.
inline std::string DrawTest_ShotPath(const std::string& name) {
    return Host_GetProgramDir() + "golden-" + name + ".png";
}

// Compares the canvas with its reviewed picture, each channel within
// `tolerance` (see CompareGolden, which PELLUCIDA_REBASELINE=1 turns into a rewrite).
inline void DrawTest_CompareGolden(const DrawCanvas& c, const std::string& name, int tolerance) {
    std::vector<uint8_t> rgb;
    for (int32_t y = 0; y < c.height; ++y)
        for (int32_t x = 0; x < c.width; ++x)
            for (int shift : {16, 8, 0}) rgb.push_back(uint8_t(c.At(x, y) >> shift));
    const std::string shot = DrawTest_ShotPath(name);
    ASSERT_EQ(lodepng::encode(shot, rgb, c.width, c.height, LCT_RGB), 0u) << shot;
    CompareGolden(shot, name, 0, tolerance);
}
