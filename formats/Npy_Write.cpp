// NPY format 1.0: the magic "\x93NUMPY", version 1.0, a little-endian 16-bit
// header length, then a Python dict literal padded with blanks and ended by a
// newline so that the data start on a 64-byte boundary.
#include "formats/Npy_Write.h"

#include "formats/File_SafeWrite.h"
#include "image/Image.h"

#include <bit>
#include <cstdio>
#include <string>
#include <vector>

int Npy_Write(const ImageBuffer* image, const char* path) {
    if (!image || !path) return 0;
    std::string header = "{'descr': '<i8', 'fortran_order': False, 'shape': (3, " +
                         std::to_string(image->height) + ", " + std::to_string(image->width) + "), }";
    const size_t preamble = 10;  // magic, version, header length
    size_t total = preamble + header.size() + 1;
    header.append((64 - total % 64) % 64, ' ');
    header += '\n';

    SafeWriteFile out;
    if (!out.Open(path)) return 0;
    FILE* f = out.Stream();
    const unsigned char lead[8] = {0x93, 'N', 'U', 'M', 'P', 'Y', 1, 0};
    const uint16_t length = uint16_t(header.size());
    const unsigned char lengthBytes[2] = {uint8_t(length & 0xFF), uint8_t(length >> 8)};
    std::fwrite(lead, 1, sizeof lead, f);
    std::fwrite(lengthBytes, 1, 2, f);
    std::fwrite(header.data(), 1, header.size(), f);

    static_assert(std::endian::native == std::endian::little, "samples are written as they lie in memory");
    for (const int64_t* plane : {image->red, image->green, image->blue})
        for (int32_t y = 0; y < image->height; ++y)
            std::fwrite(plane + int64_t(y) * image->stride, sizeof(int64_t), size_t(image->width), f);
    return out.Commit() ? 1 : 0;
}
