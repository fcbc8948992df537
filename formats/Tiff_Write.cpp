// The fixed 16-bit TIFF layout. Offsets from the start of the file:
//   0    "II", 42, first directory offset 8
//   8    entry count: 12, or 13 with an attachment
//   10   the entries (12 bytes each), then a next-directory offset of 0
//   then XResolution 1/1, YResolution 1/1, BitsPerSample 16, 16, 16,
//   then the pixels (one strip, rows of red, green, blue as 16-bit values),
//   then the attachment.
// Entries that point at data are written with 0 and patched as the data are
// written: the writer seeks back to the entry's value field and returns.
#include "formats/Tiff_Write.h"

#include "formats/File_SafeWrite.h"
#include "image/Image.h"

#include <vector>

namespace {

enum : uint16_t { kTypeByte = 1, kTypeShort = 3, kTypeLong = 4, kTypeRational = 5 };

constexpr long kFirstEntryOffset = 10;
constexpr long kEntrySize = 12;
constexpr long kValueFieldOffset = 8;
// Entry positions of the values that are patched.
constexpr int kEntryBitsPerSample = 2;
constexpr int kEntryStripOffsets = 5;
constexpr int kEntryXResolution = 9;
constexpr int kEntryYResolution = 10;
constexpr int kEntryAttachment = 12;

void Put16(FILE* file, uint32_t v) {
    const uint8_t b[2] = {uint8_t(v), uint8_t(v >> 8)};
    std::fwrite(b, 1, 2, file);
}

void Put32(FILE* file, uint32_t v) {
    const uint8_t b[4] = {uint8_t(v), uint8_t(v >> 8), uint8_t(v >> 16), uint8_t(v >> 24)};
    std::fwrite(b, 1, 4, file);
}

// An entry whose count is not 1; its value is patched later.
void WriteEntry(FILE* file, uint16_t tag, uint16_t type, uint32_t count, uint32_t value) {
    Put16(file, tag);
    Put16(file, type);
    Put32(file, count);
    Put32(file, value);
}

// Points entry `index` at the current end of the file.
bool PatchOffset(FILE* file, int index) {
    const long here = std::ftell(file);
    if (here < 0) return false;
    if (std::fseek(file, kFirstEntryOffset + index * kEntrySize + kValueFieldOffset, SEEK_SET) != 0)
        return false;
    Put32(file, static_cast<uint32_t>(here));
    return std::fseek(file, here, SEEK_SET) == 0;
}

// One row of samples brought to 16 bits: shifted left by s = 16 - bitDepth when
// s > 0, right by -s otherwise, then clamped to 0..65535.
void PackRow(const ImageBuffer* image, int32_t y, uint8_t* out) {
    const int shift = 16 - image->bitDepth;
    const size_t row = static_cast<size_t>(y) * static_cast<size_t>(image->stride);
    const int64_t* planes[3] = {image->red + row, image->green + row, image->blue + row};
    for (int32_t x = 0; x < image->width; ++x) {
        for (int c = 0; c < 3; ++c) {
            int64_t v = planes[c][x];
            v = shift > 0 ? v << shift : v >> -shift;
            v = v < 0 ? 0 : v > 65535 ? 65535 : v;
            out[0] = uint8_t(v);
            out[1] = uint8_t(v >> 8);
            out += 2;
        }
    }
}

}  // namespace

void Tiff_WriteTag(FILE* file, uint16_t tag, uint16_t type, uint32_t value) {
    WriteEntry(file, tag, type, 1, value);
}

int Tiff_Write(const ImageBuffer* image, const char* path) {
    if (!image || !path || !image->red || !image->green || !image->blue || image->width < 0 ||
        image->height < 0)
        return 0;
    SafeWriteFile out;
    if (!out.Open(path)) return 0;
    FILE* file = out.Stream();
    const uint32_t width = static_cast<uint32_t>(image->width);
    const uint32_t height = static_cast<uint32_t>(image->height);
    const bool hasAttachment = image->attachment && image->attachmentSize > 0;

    std::fwrite("II", 1, 2, file);
    Put16(file, 42);
    Put32(file, 8);
    Put16(file, hasAttachment ? 13 : 12);
    Tiff_WriteTag(file, 256, kTypeShort, width);
    Tiff_WriteTag(file, 257, kTypeShort, height);
    WriteEntry(file, 258, kTypeShort, 3, 0);
    Tiff_WriteTag(file, 259, kTypeShort, 1);
    Tiff_WriteTag(file, 262, kTypeShort, 2);
    Tiff_WriteTag(file, 273, kTypeLong, 0);
    Tiff_WriteTag(file, 277, kTypeShort, 3);
    Tiff_WriteTag(file, 278, kTypeLong, height);
    Tiff_WriteTag(file, 279, kTypeLong, width * height * 6);
    Tiff_WriteTag(file, 282, kTypeRational, 0);
    Tiff_WriteTag(file, 283, kTypeRational, 0);
    Tiff_WriteTag(file, 296, kTypeShort, 1);
    if (hasAttachment) WriteEntry(file, 65000, kTypeByte, image->attachmentSize, 0);
    Put32(file, 0);

    if (!PatchOffset(file, kEntryXResolution)) return 0;
    Put32(file, 1);
    Put32(file, 1);
    if (!PatchOffset(file, kEntryYResolution)) return 0;
    Put32(file, 1);
    Put32(file, 1);
    if (!PatchOffset(file, kEntryBitsPerSample)) return 0;
    Put16(file, 16);
    Put16(file, 16);
    Put16(file, 16);

    if (!PatchOffset(file, kEntryStripOffsets)) return 0;
    std::vector<uint8_t> row(static_cast<size_t>(width) * 6);
    for (int32_t y = 0; y < image->height; ++y) {
        PackRow(image, y, row.data());
        if (std::fwrite(row.data(), 1, row.size(), file) != row.size()) return 0;
    }
    if (hasAttachment) {
        if (!PatchOffset(file, kEntryAttachment)) return 0;
        if (std::fwrite(image->attachment, 1, image->attachmentSize, file) != image->attachmentSize) return 0;
    }
    return out.Commit() ? 1 : 0;
}
