// Baseline JPEG through stb_image. A walk over the marker segments decides
// whether stb may decode the file at all: before the first scan only SOF0, DHT,
// DQT, DRI, COM and the APPn segments (skipped by their length) may appear, so
// a progressive (SOF2), extended, lossless or arithmetic-coded file is refused
// without being decoded. Every Huffman table in the file, between later scans
// too, is checked before stb sees it: this stb release writes past its tables
// when the code counts of one table add up to more than 256 (found by fuzzing).
// The image is delivered at 8 bits; a one-component file fills all three
// planes and sets the mono flag.
#include "formats/Jpeg_Read.h"

#include "formats/File_ReadAll.h"
#include "formats/Format_Limits.h"
#include "image/Image.h"

#include <climits>
#include <cstdlib>
#include <memory>

#define STB_IMAGE_IMPLEMENTATION
#define STBI_ONLY_JPEG
#define STBI_NO_STDIO
#define STBI_NO_FAILURE_STRINGS
#define STBI_NO_LINEAR
#define STBI_NO_HDR
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#pragma GCC diagnostic ignored "-Wsign-compare"
#include <stb/stb_image.h>
#pragma GCC diagnostic pop

namespace {

enum : uint8_t {
    kMarkerSof0 = 0xC0,
    kMarkerDht = 0xC4,
    kMarkerRst0 = 0xD0,
    kMarkerRst7 = 0xD7,
    kMarkerSoi = 0xD8,
    kMarkerEoi = 0xD9,
    kMarkerSos = 0xDA,
    kMarkerDqt = 0xDB,
    kMarkerDnl = 0xDC,
    kMarkerDri = 0xDD,
    kMarkerApp0 = 0xE0,
    kMarkerApp15 = 0xEF,
    kMarkerCom = 0xFE,
};

// Every 8 x 8 block of the first component costs at least two bits (a DC code
// and an end-of-block code), so a file of n bytes holds at most 256 n pixels; a
// header announcing more belongs to a file that could never be complete.
constexpr uint64_t kMaxPixelsPerByte = 256;
constexpr size_t kMaxHuffmanCodes = 256;

struct StbDeleter {
    void operator()(stbi_uc* p) const { stbi_image_free(p); }
};

// A DHT segment holds whole tables, each with at most 256 codes.
bool HuffmanTablesValid(const uint8_t* segment, size_t length) {
    size_t at = 0;
    while (at < length) {
        if (length - at < 17) return false;
        const uint8_t classAndId = segment[at];
        if ((classAndId >> 4) > 1 || (classAndId & 15) > 3) return false;
        size_t codes = 0;
        for (int i = 1; i <= 16; ++i) codes += segment[at + size_t(i)];
        if (codes > kMaxHuffmanCodes || length - at - 17 < codes) return false;
        at += 17 + codes;
    }
    return true;
}

}  // namespace

bool Jpeg_IsBaseline(const uint8_t* data, size_t size) {
    if (!data || size < 4 || data[0] != 0xFF || data[1] != kMarkerSoi) return false;
    bool frame = false;
    bool scanned = false;
    size_t at = 2;
    for (;;) {
        if (at >= size) return scanned;  // a cut file: stb decodes what is there
        if (data[at] != 0xFF) {
            if (!scanned) return false;
            ++at;  // entropy-coded data between markers
            continue;
        }
        while (at < size && data[at] == 0xFF) ++at;  // fill bytes
        if (at >= size) return scanned;
        const uint8_t marker = data[at];
        if (scanned && (marker == 0x00 || (marker >= kMarkerRst0 && marker <= kMarkerRst7))) {
            ++at;  // a stuffed zero or a restart marker inside the scan
            continue;
        }
        if (marker == kMarkerEoi) return scanned;
        if (at + 2 >= size) return scanned;
        const size_t length = size_t(data[at + 1]) << 8 | data[at + 2];
        if (length < 2) return false;
        const bool tables = marker == kMarkerDht || marker == kMarkerDqt || marker == kMarkerDri ||
                            marker == kMarkerCom || (marker >= kMarkerApp0 && marker <= kMarkerApp15);
        if (marker == kMarkerSos) {
            if (!frame) return false;
            scanned = true;
        } else if (marker == kMarkerSof0 && !frame && !scanned) {
            frame = true;
        } else if (!tables && !(scanned && marker == kMarkerDnl)) {
            return false;
        }
        if (marker == kMarkerDht) {
            if (length - 2 > size - at - 3) return false;
            if (!HuffmanTablesValid(data + at + 3, length - 2)) return false;
        }
        at += 1 + length;
    }
}

ImageBuffer* Jpeg_ReadMemory(const uint8_t* data, size_t size) {
    if (!Jpeg_IsBaseline(data, size) || size > size_t{INT_MAX}) return nullptr;
    const int length = static_cast<int>(size);
    int width = 0, height = 0, components = 0;
    if (!stbi_info_from_memory(data, length, &width, &height, &components)) return nullptr;
    if (width <= 0 || height <= 0 || !Format_SizeFits(uint64_t(width), uint64_t(height))) return nullptr;
    if (uint64_t(width) * uint64_t(height) > kMaxPixelsPerByte * size) return nullptr;
    const int wanted = components == 1 ? 1 : 3;
    int decodedWidth = 0, decodedHeight = 0, fileComponents = 0;
    std::unique_ptr<stbi_uc, StbDeleter> pixels(
        stbi_load_from_memory(data, length, &decodedWidth, &decodedHeight, &fileComponents, wanted));
    if (!pixels || decodedWidth != width || decodedHeight != height) return nullptr;

    ImagePtr image(Image_Create(width, height));
    image->bitDepth = 8;
    image->maxValue = 255;
    image->mono = wanted == 1 ? 1 : 0;
    const stbi_uc* p = pixels.get();
    for (int32_t y = 0; y < height; ++y) {
        const size_t row = size_t(y) * size_t(image->stride);
        int64_t* red = image->red + row;
        int64_t* green = image->green + row;
        int64_t* blue = image->blue + row;
        if (wanted == 1) {
            for (int32_t x = 0; x < width; ++x, ++p) red[x] = green[x] = blue[x] = *p;
        } else {
            for (int32_t x = 0; x < width; ++x, p += 3) {
                red[x] = p[0];
                green[x] = p[1];
                blue[x] = p[2];
            }
        }
    }
    return image.release();
}

ImageBuffer* Jpeg_Read(const char* path) {
    FileBytes file;
    if (!File_ReadAll(path, &file)) return nullptr;
    return Jpeg_ReadMemory(file.data.get(), file.size);
}
