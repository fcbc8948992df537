// JPEG at quality 85: the image packed to 8 bits, encoded into memory by
// stb_image_write and written through the safe-write helper.
#include "formats/Jpeg_Write.h"

#include "formats/File_SafeWrite.h"
#include "formats/Format_PackRgb8.h"
#include "image/Image.h"

#include <vector>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STBI_WRITE_NO_STDIO
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#pragma GCC diagnostic ignored "-Wsign-compare"
#include <stb/stb_image_write.h>
#pragma GCC diagnostic pop

namespace {

constexpr int kJpegQuality = 85;

void AppendBytes(void* context, void* data, int size) {
    auto* out = static_cast<std::vector<uint8_t>*>(context);
    const auto* bytes = static_cast<const uint8_t*>(data);
    out->insert(out->end(), bytes, bytes + size);
}

}  // namespace

int Jpeg_Write(const ImageBuffer* image, const char* path) {
    if (!image || !path || !image->red || !image->green || !image->blue || image->width <= 0 ||
        image->height <= 0 || image->width > 65535 || image->height > 65535)
        return 0;
    const std::vector<uint8_t> rgb = Format_PackRgb8(image);
    std::vector<uint8_t> jpeg;
    if (!stbi_write_jpg_to_func(&AppendBytes, &jpeg, image->width, image->height, 3, rgb.data(),
                                kJpegQuality))
        return 0;
    return File_SafeWrite(path, jpeg.data(), jpeg.size());
}
