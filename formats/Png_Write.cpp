// 8-bit RGB PNG: the image packed to 8 bits, encoded in memory by lodepng and
// written through the safe-write helper.
#include "formats/Png_Write.h"

#include "formats/File_SafeWrite.h"
#include "formats/Format_PackRgb8.h"
#include "image/Image.h"

#include <lodepng.h>

#include <cstdlib>
#include <memory>

namespace {

struct FreeDeleter {
    void operator()(unsigned char* p) const { std::free(p); }
};

}  // namespace

int Png_Write(const ImageBuffer* image, const char* path) {
    if (!image || !path || !image->red || !image->green || !image->blue || image->width <= 0 ||
        image->height <= 0)
        return 0;
    const std::vector<uint8_t> rgb = Format_PackRgb8(image);
    unsigned char* png = nullptr;
    size_t pngSize = 0;
    const unsigned error =
        lodepng_encode24(&png, &pngSize, rgb.data(), unsigned(image->width), unsigned(image->height));
    std::unique_ptr<unsigned char, FreeDeleter> owner(png);
    if (error != 0 || !png) return 0;
    return File_SafeWrite(path, png, pngSize);
}
