// The toolkit's icon format, .sqi: a small header and four quadtree planes
// (red, green, blue in 5-6-5 precision, then coverage). A plane's tree is
// decoded at the resolution the icon is shown at, so one stream serves every
// size: nodes below the pixel level are read through and ignored.
#pragma once

#include <cstddef>
#include <cstdint>

inline constexpr size_t kSqiHeaderSize = 8;
inline constexpr uint32_t kSqiModeTinted = 1;
inline constexpr int kSqiPlaneBits[4] = {5, 6, 5, 8};

// Where an icon of w x h lands in a widget of BW x BH pixels for a fill mode,
// and the power-of-two buffer it is decoded in.
struct SqiPlacement {
    int32_t destWidth = 0;  // DW x DH
    int32_t destHeight = 0;
    int32_t offsetX = 0;  // relative to the widget; negative when it overhangs
    int32_t offsetY = 0;
    uint32_t bufferWidth = 0;  // PW x PH
    uint32_t bufferHeight = 0;
};

// False when nothing is to be drawn (a widget or destination below one pixel,
// an empty header size, or a buffer beyond what the decoder accepts).
bool Sqi_Place(uint32_t imageWidth, uint32_t imageHeight, int32_t widgetWidth, int32_t widgetHeight,
               uint32_t fillMode, SqiPlacement* placement);

// Decodes one plane's bit stream of `length` bytes into a bufferWidth x
// bufferHeight byte buffer. Bits past the end of the stream read as 0.
// Returns the number of bits the tree used.
uint64_t Sqi_DecodePlane(const uint8_t* stream, size_t length, int bits, uint32_t bufferWidth,
                         uint32_t bufferHeight, uint8_t* buffer);

// A bitmap widget's area in a 32-bit framebuffer.
struct SqiTarget {
    uint32_t* pixels = nullptr;  // the framebuffer's first pixel
    uint32_t pixelsPerRow = 0;
    uint32_t framebufferWidth = 0;  // drawing is clipped to these and to the widget
    uint32_t framebufferHeight = 0;
    int32_t x = 0;  // the widget's rectangle in pixels
    int32_t y = 0;
    int32_t width = 0;
    int32_t height = 0;
    uint32_t fillMode = 0;         // FillMode of WidgetKinds.h
    uint16_t tint[3] = {0, 0, 0};  // the theme's tints in 5-6-5, for tinted icons
};

// Decodes the .sqi in `data` into the target. Returns false when the data is
// too short for its header or nothing was to be drawn.
bool Sqi_Draw(const uint8_t* data, size_t size, const SqiTarget& target);

// 5-6-5 colour kept in a 32-bit pixel: red in bits 19..23, green 10..15, blue 3..7.
inline uint32_t Sqi_PixelFrom565(uint32_t r, uint32_t g, uint32_t b) {
    return (r << 19) | (g << 10) | (b << 3);
}
