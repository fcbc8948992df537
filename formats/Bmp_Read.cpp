// Reader for "BM" files with 24 or 32 bits a pixel and compression 0 (BI_RGB)
// or 3 (BI_BITFIELDS, 32 bits only), rows bottom-up (positive height) or
// top-down (negative height). Delivers an 8-bit colour image. The fourth byte of
// a BI_RGB 32-bit pixel is padding, never alpha; with bit fields each channel
// is taken through its mask and scaled to 8 bits. Palette, 16-bit, RLE and
// OS/2 core-header files are refused.
#include "formats/Bmp_Read.h"

#include "formats/File_ReadAll.h"
#include "formats/Format_Limits.h"
#include "image/Image.h"

#include <bit>

namespace {

constexpr size_t kFileHeaderSize = 14;
constexpr uint32_t kMinInfoHeaderSize = 40;
constexpr uint32_t kCompressionRgb = 0;
constexpr uint32_t kCompressionBitFields = 3;
// With bit fields the three masks follow the 40-byte header; the larger
// headers hold them at the same place.
constexpr size_t kMasksOffset = kFileHeaderSize + kMinInfoHeaderSize;

uint32_t Le16(const uint8_t* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8;
}
uint32_t Le32(const uint8_t* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

// One channel of a bit-field pixel: the masked bits, scaled to 0..255.
struct Channel {
    int shift = 0;
    int bits = 0;
    uint32_t mask = 0;

    bool Set(uint32_t m) {
        if (m == 0) return false;
        mask = m;
        shift = std::countr_zero(m);
        bits = std::popcount(m);
        return (m >> shift) == (uint32_t{0xFFFFFFFF} >> (32 - bits));  // one run of ones
    }
    int64_t Take(uint32_t pixel) const {
        const uint32_t v = (pixel & mask) >> shift;
        if (bits >= 8) return v >> (bits - 8);
        return (int64_t{v} * 255 + ((1 << bits) - 1) / 2) / ((1 << bits) - 1);
    }
};

}  // namespace

ImageBuffer* Bmp_ReadMemory(const uint8_t* data, size_t size) {
    if (!data || size < kFileHeaderSize + kMinInfoHeaderSize || data[0] != 'B' || data[1] != 'M')
        return nullptr;
    const uint32_t pixelOffset = Le32(data + 10);
    const uint32_t infoSize = Le32(data + 14);
    const int32_t width = static_cast<int32_t>(Le32(data + 18));
    const int32_t signedHeight = static_cast<int32_t>(Le32(data + 22));
    const uint32_t bitsPerPixel = Le16(data + 28);
    const uint32_t compression = Le32(data + 30);
    if (infoSize < kMinInfoHeaderSize) return nullptr;
    if (bitsPerPixel != 24 && bitsPerPixel != 32) return nullptr;
    if (compression != kCompressionRgb && !(compression == kCompressionBitFields && bitsPerPixel == 32))
        return nullptr;
    if (width <= 0 || signedHeight == 0 || signedHeight == INT32_MIN) return nullptr;
    const bool topDown = signedHeight < 0;
    const int32_t height = topDown ? -signedHeight : signedHeight;
    if (!Format_SizeFits(uint64_t(width), uint64_t(height))) return nullptr;

    Channel red, green, blue;
    if (compression == kCompressionBitFields) {
        if (size < kMasksOffset + 12) return nullptr;
        if (!red.Set(Le32(data + kMasksOffset)) || !green.Set(Le32(data + kMasksOffset + 4)) ||
            !blue.Set(Le32(data + kMasksOffset + 8)))
            return nullptr;
    }

    // Rows are padded to four bytes; the last row's padding may be missing.
    const size_t bytesPerPixel = bitsPerPixel / 8;
    const uint64_t rowStride = (uint64_t(width) * bytesPerPixel + 3) & ~uint64_t{3};
    const uint64_t pixelBytes = rowStride * uint64_t(height - 1) + uint64_t(width) * bytesPerPixel;
    if (pixelOffset > size || pixelBytes > size - pixelOffset) return nullptr;

    ImagePtr image(Image_Create(width, height));
    image->bitDepth = 8;
    image->maxValue = 255;
    const uint8_t* pixels = data + pixelOffset;
    for (int32_t y = 0; y < height; ++y) {
        const int32_t fileRow = topDown ? y : height - 1 - y;
        const uint8_t* p = pixels + uint64_t(fileRow) * rowStride;
        const size_t row = size_t(y) * size_t(image->stride);
        int64_t* r = image->red + row;
        int64_t* g = image->green + row;
        int64_t* b = image->blue + row;
        if (compression == kCompressionBitFields) {
            for (int32_t x = 0; x < width; ++x, p += 4) {
                const uint32_t pixel = Le32(p);
                r[x] = red.Take(pixel);
                g[x] = green.Take(pixel);
                b[x] = blue.Take(pixel);
            }
        } else {
            for (int32_t x = 0; x < width; ++x, p += bytesPerPixel) {
                b[x] = p[0];
                g[x] = p[1];
                r[x] = p[2];
            }
        }
    }
    return image.release();
}

ImageBuffer* Bmp_Read(const char* path) {
    FileBytes file;
    if (!File_ReadAll(path, &file)) return nullptr;
    return Bmp_ReadMemory(file.data.get(), file.size);
}
