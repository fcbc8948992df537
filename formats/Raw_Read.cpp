// Headerless raw frames as some cameras dump their sensor: the file size alone
// tells the frame's width, height and bits a pixel (size = width x height x
// bits / 8). Every known width is a multiple of four, so rows start on a byte.
//
// Bit packing: one MSB-first bit stream, row after row, no padding. For 10 bits
// four pixels fill five bytes:
//   p0 = b0 << 2 | b1 >> 6          p1 = (b1 & 0x3F) << 4 | b2 >> 4
//   p2 = (b2 & 0x0F) << 6 | b3 >> 2  p3 = (b3 & 0x03) << 8 | b4
// and for 12 bits two pixels fill three bytes:
//   p0 = b0 << 4 | b1 >> 4          p1 = (b1 & 0x0F) << 8 | b2
// The frame is delivered mono (the Bayer matrix is left in place) at its own
// depth, 10 or 12 bits.
#include "formats/Raw_Read.h"

#include "formats/File_ReadAll.h"
#include "host/Host_Path.h"
#include "image/Image.h"

#include <cstring>
#include <filesystem>
#include <system_error>

namespace {

struct RawFrame {
    uint64_t fileSize;
    int32_t width;
    int32_t height;
    int bits;
};

constexpr RawFrame kRawFrames[] = {
    {6553440, 2664, 1968, 10},  {6573120, 2672, 1968, 10},  {7710960, 2888, 2136, 10},
    {9219600, 3152, 2340, 10},  {10341600, 3336, 2480, 10}, {10383120, 3344, 2484, 10},
    {12945240, 3736, 2772, 10}, {15636240, 4104, 3048, 10}, {15467760, 3720, 2772, 12},
};

const RawFrame* FindFrame(uint64_t size) {
    for (const RawFrame& frame : kRawFrames)
        if (frame.fileSize == size) return &frame;
    return nullptr;
}

void Unpack10(const uint8_t* in, int64_t* out, int32_t width) {
    for (int32_t x = 0; x < width; x += 4, in += 5) {
        out[x] = int64_t{in[0]} << 2 | in[1] >> 6;
        out[x + 1] = int64_t{in[1] & 0x3F} << 4 | in[2] >> 4;
        out[x + 2] = int64_t{in[2] & 0x0F} << 6 | in[3] >> 2;
        out[x + 3] = int64_t{in[3] & 0x03} << 8 | in[4];
    }
}

void Unpack12(const uint8_t* in, int64_t* out, int32_t width) {
    for (int32_t x = 0; x < width; x += 2, in += 3) {
        out[x] = int64_t{in[0]} << 4 | in[1] >> 4;
        out[x + 1] = int64_t{in[1] & 0x0F} << 8 | in[2];
    }
}

}  // namespace

ImageBuffer* Raw_ReadMemory(const uint8_t* data, size_t size) {
    const RawFrame* frame = data ? FindFrame(size) : nullptr;
    if (!frame) return nullptr;
    ImagePtr image(Image_Create(frame->width, frame->height));
    image->bitDepth = static_cast<uint16_t>(frame->bits);
    image->maxValue = (int64_t{1} << frame->bits) - 1;
    image->mono = 1;
    const size_t rowBytes = size_t(frame->width) * size_t(frame->bits) / 8;
    const size_t plane = size_t(image->stride) * size_t(frame->height) * sizeof(int64_t);
    for (int32_t y = 0; y < frame->height; ++y) {
        int64_t* row = image->red + size_t(y) * size_t(image->stride);
        if (frame->bits == 10)
            Unpack10(data + size_t(y) * rowBytes, row, frame->width);
        else
            Unpack12(data + size_t(y) * rowBytes, row, frame->width);
    }
    std::memcpy(image->green, image->red, plane);
    std::memcpy(image->blue, image->red, plane);
    return image.release();
}

ImageBuffer* Raw_Read(const char* path) {
    // The size decides: other files are passed over without being read.
    std::error_code error;
    if (!path) return nullptr;
    const uintmax_t size = std::filesystem::file_size(Host_Path(path), error);
    if (error || !FindFrame(size)) return nullptr;
    FileBytes file;
    if (!File_ReadAll(path, &file)) return nullptr;
    return Raw_ReadMemory(file.data.get(), file.size);
}
