#include "app/TestPicture.h"

namespace {

// White, yellow, cyan, green, magenta, red, blue, black.
constexpr uint32_t kBars[8] = {0xFFFFFF, 0xFFFF00, 0x00FFFF, 0x00FF00,
                               0xFF00FF, 0xFF0000, 0x0000FF, 0x000000};
constexpr int kMarkerRadius = 6;

}  // namespace

uint32_t TestPicture_Pixel(uint32_t x, uint32_t y, uint32_t width, uint32_t height) {
    if (width == 0 || height == 0) return 0;
    if (y < height * 2 / 3) return kBars[uint64_t(x) * 8 / width];
    // A ramp of 32 grey steps, each kept exact at 5-6-5 precision.
    uint32_t step = uint32_t(uint64_t(x) * 32 / width);
    uint32_t grey = step * 255 / 31;
    grey &= 0xF8;
    return grey << 16 | grey << 8 | grey;
}

void TestPicture_Draw(uint32_t* pixels, uint32_t pixelsPerRow, uint32_t width, uint32_t height) {
    if (!pixels) return;
    for (uint32_t y = 0; y < height; ++y) {
        uint32_t* row = pixels + uint64_t(y) * pixelsPerRow;
        for (uint32_t x = 0; x < width; ++x) row[x] = TestPicture_Pixel(x, y, width, height);
    }
}

void TestPicture_DrawMarker(uint32_t* pixels, uint32_t pixelsPerRow, uint32_t width, uint32_t height,
                            uint32_t x, uint32_t y, bool buttonDown) {
    if (!pixels) return;
    for (int dy = -kMarkerRadius; dy <= kMarkerRadius; ++dy) {
        for (int dx = -kMarkerRadius; dx <= kMarkerRadius; ++dx) {
            int64_t px = int64_t(x) + dx, py = int64_t(y) + dy;
            if (px < 0 || py < 0 || px >= int64_t(width) || py >= int64_t(height)) continue;
            bool edge =
                dx == -kMarkerRadius || dx == kMarkerRadius || dy == -kMarkerRadius || dy == kMarkerRadius;
            if (edge || buttonDown) pixels[py * pixelsPerRow + px] = kTestPictureMarkerColour;
        }
    }
}
