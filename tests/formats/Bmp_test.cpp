// BMP reader on crafted files: row order, channel masks, and refused or
// truncated headers.
#include "formats/Bmp_Read.h"
#include "image/Image.h"
#include "support/LittleEndian.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr auto ReadMemory = ReadBytes<&Bmp_ReadMemory>;

// Red, then green, then blue samples.
std::vector<int64_t> Planes(const ImageBuffer& image) {
    const size_t n = size_t(image.width) * size_t(image.height);
    std::vector<int64_t> out(image.red, image.red + n);
    out.insert(out.end(), image.green, image.green + n);
    out.insert(out.end(), image.blue, image.blue + n);
    return out;
}

// A BMP with a 40-byte info header (plus masks for compression 3); pixel bytes
// are given per file row, already padded.
std::vector<uint8_t> MakeBmp(int32_t width, int32_t height, uint32_t bits, uint32_t compression,
                             const std::vector<uint8_t>& pixels, std::vector<uint32_t> masks = {}) {
    const uint32_t header = uint32_t(14 + 40 + masks.size() * 4);
    // After "BM": file size, reserved, pixel offset; the info header's size,
    // width, height, planes (1) and bits, compression and five zero fields.
    const uint32_t w = uint32_t(width), h = uint32_t(height), size = header + uint32_t(pixels.size());
    std::vector<uint32_t> fields = {size, 0, header, 40, w, h, 1 | bits << 16, compression, 0, 0, 0, 0, 0};
    fields.insert(fields.end(), masks.begin(), masks.end());
    std::vector<uint8_t> out = {'B', 'M'};
    out.resize(header);
    for (size_t i = 0; i < fields.size(); ++i) LittleEndian_Set(out, 2 + 4 * i, fields[i], 4);
    out.insert(out.end(), pixels.begin(), pixels.end());
    return out;
}

}  // namespace

TEST(BmpPixels, RowOrderPaddingAndChannelMasks) {
    // 3 x 2 pixels, 24 bits: rows of 9 bytes padded to 12. Bytes are blue, green, red.
    const std::vector<uint8_t> bottomUp = {11, 12, 13, 14, 15, 16, 17, 18, 19, 0, 0, 0,
                                           1,  2,  3,  4,  5,  6,  7,  8,  9,  0, 0, 0};
    const std::vector<uint8_t> topDown = {1,  2,  3,  4,  5,  6,  7,  8,  9,  0, 0, 0,
                                          11, 12, 13, 14, 15, 16, 17, 18, 19, 0, 0, 0};
    const std::vector<int64_t> rgb = {3, 6, 9, 13, 16, 19, 2, 5, 8, 12, 15, 18, 1, 4, 7, 11, 14, 17};
    // 10 bits a channel (red in bits 20..29, green 10..19, blue 0..9), and 5-6-5
    // in 32 bits, whose narrow channels stretch to the full range.
    std::vector<uint8_t> wide(4), narrow(4);
    LittleEndian_Set(wide, 0, 1023u << 20 | 512u << 10 | 4u, 4);
    LittleEndian_Set(narrow, 0, 31u << 11 | 32u << 5 | 1u, 4);
    const struct {
        const char* what;
        std::vector<uint8_t> bmp;
        std::vector<int64_t> planes;  // see Planes()
    } cases[] = {
        {"bottom-up", MakeBmp(3, 2, 24, 0, bottomUp), rgb},
        {"top-down", MakeBmp(3, -2, 24, 0, topDown), rgb},
        {"last row without padding", MakeBmp(1, 2, 24, 0, {1, 2, 3, 0, 4, 5, 6}), {6, 3, 5, 2, 4, 1}},
        {"10-bit masks", MakeBmp(1, 1, 32, 3, wide, {0x3FF00000, 0x000FFC00, 0x000003FF}), {255, 128, 1}},
        // 32 x 255 / 63 and 1 x 255 / 31, rounded.
        {"5-6-5 masks", MakeBmp(1, 1, 32, 3, narrow, {0xF800, 0x07E0, 0x001F}), {255, 130, 8}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ImagePtr image = ReadMemory(c.bmp);
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(Planes(*image), c.planes);
    }
}

TEST(BmpRefused, UnsupportedDamagedOrTruncatedHeaders) {
    const std::vector<uint8_t> px(64, 7);
    auto core = MakeBmp(2, 2, 24, 0, px), offset = core;
    LittleEndian_Set(core, 14, 12, 4);
    LittleEndian_Set(offset, 10, 0xFFFFFFF0, 4);
    // 16 bits and palettes are refused seeds of the fuzz corpus.
    for (const auto& [what, bmp] :
         {std::pair{"RLE", MakeBmp(2, 2, 24, 1, px)},
          {"bit fields at 24 bits", MakeBmp(2, 2, 24, 3, px, {0xFF0000, 0xFF00, 0xFF})},
          {"empty mask", MakeBmp(2, 2, 32, 3, px, {0, 0xFF00, 0xFF})},
          {"split mask", MakeBmp(2, 2, 32, 3, px, {0xF0F000, 0xFF00, 0xFF})},
          {"zero width", MakeBmp(0, 2, 24, 0, px)},
          {"zero height", MakeBmp(2, 0, 24, 0, px)},
          {"negative width", MakeBmp(-2, 2, 24, 0, px)},
          {"height INT32_MIN", MakeBmp(2, INT32_MIN, 24, 0, px)},
          {"pixels not in the file", MakeBmp(40000, 40000, 24, 0, px)},
          {"OS/2 core header", core},
          {"pixel offset past the end", offset}})
        EXPECT_EQ(ReadMemory(bmp), nullptr) << what;
    const auto bytes = MakeBmp(4, -3, 32, 3, std::vector<uint8_t>(4 * 3 * 4, 0x33), {0xFF0000, 0xFF00, 0xFF});
    ASSERT_NE(ReadMemory(bytes), nullptr);
    for (size_t n = 0; n < bytes.size(); ++n)
        EXPECT_EQ(ReadMemory(std::vector<uint8_t>(bytes.begin(), bytes.begin() + long(n))), nullptr) << n;
}
