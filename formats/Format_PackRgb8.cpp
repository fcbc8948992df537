#include "formats/Format_PackRgb8.h"

#include "image/Image.h"

std::vector<uint8_t> Format_PackRgb8(const ImageBuffer* image) {
    const size_t width = size_t(image->width);
    std::vector<uint8_t> out(width * size_t(image->height) * 3);
    const int shift = 8 - image->bitDepth;
    uint8_t* o = out.data();
    for (int32_t y = 0; y < image->height; ++y) {
        const size_t row = size_t(y) * size_t(image->stride);
        const int64_t* planes[3] = {image->red + row, image->green + row, image->blue + row};
        for (size_t x = 0; x < width; ++x) {
            for (int c = 0; c < 3; ++c) {
                int64_t v = planes[c][x];
                v = shift > 0 ? v << shift : v >> -shift;
                *o++ = uint8_t(v < 0 ? 0 : v > 255 ? 255 : v);
            }
        }
    }
    return out;
}
