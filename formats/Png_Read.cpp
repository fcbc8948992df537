// PNG through lodepng: grey, grey with alpha, RGB, palette and RGBA files of
// any bit depth. Files of 16 bits a sample are delivered at 16 bits, all others
// at 8 (lower grey depths and palettes are expanded). Grey files set the mono
// flag. An alpha plane is made only when the file can carry transparency (an
// alpha channel, a palette with transparent entries or a tRNS colour key).
#include "formats/Png_Read.h"

#include "formats/File_ReadAll.h"
#include "formats/Format_Limits.h"
#include "image/Image.h"

#include <lodepng.h>

#include <cstdlib>
#include <memory>

namespace {

// Deflate cannot expand data by more than about 1032:1, so a file whose
// announced scanlines exceed that many times its own size could never decode.
constexpr uint64_t kDeflateMaxRatio = 1032;

struct StateOwner {
    LodePNGState state;
    StateOwner() { lodepng_state_init(&state); }
    ~StateOwner() { lodepng_state_cleanup(&state); }
    StateOwner(const StateOwner&) = delete;
    StateOwner& operator=(const StateOwner&) = delete;
};

struct FreeDeleter {
    void operator()(unsigned char* p) const { std::free(p); }
};
using LodeBuffer = std::unique_ptr<unsigned char, FreeDeleter>;

template <int Channels, bool Wide>
void CopyRows(const unsigned char* in, ImageBuffer* image) {
    constexpr int kBytes = Wide ? 2 : 1;
    const size_t width = size_t(image->width);
    for (int32_t y = 0; y < image->height; ++y) {
        const unsigned char* p = in + size_t(y) * width * Channels * kBytes;
        const size_t row = size_t(y) * size_t(image->stride);
        int64_t* red = image->red + row;
        int64_t* green = image->green + row;
        int64_t* blue = image->blue + row;
        int64_t* alpha = image->alpha ? image->alpha + row : nullptr;
        auto sample = [](const unsigned char* s) -> int64_t { return Wide ? (s[0] << 8 | s[1]) : s[0]; };
        for (size_t x = 0; x < width; ++x, p += Channels * kBytes) {
            if constexpr (Channels <= 2) {
                const int64_t v = sample(p);
                red[x] = v;
                green[x] = v;
                blue[x] = v;
                if constexpr (Channels == 2) alpha[x] = sample(p + kBytes);
            } else {
                red[x] = sample(p);
                green[x] = sample(p + kBytes);
                blue[x] = sample(p + 2 * kBytes);
                if constexpr (Channels == 4) alpha[x] = sample(p + 3 * kBytes);
            }
        }
    }
}

template <bool Wide>
void CopyPixels(const unsigned char* in, ImageBuffer* image, int channels) {
    switch (channels) {
        case 1:
            CopyRows<1, Wide>(in, image);
            break;
        case 2:
            CopyRows<2, Wide>(in, image);
            break;
        case 3:
            CopyRows<3, Wide>(in, image);
            break;
        case 4:
            CopyRows<4, Wide>(in, image);
            break;
    }
}

}  // namespace

ImageBuffer* Png_ReadMemory(const uint8_t* data, size_t size) {
    if (!data || size == 0) return nullptr;
    StateOwner owner;
    LodePNGState& state = owner.state;
#ifdef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION
    // Checksums would stop nearly every mutated input at the door.
    state.decoder.ignore_crc = 1;
    state.decoder.zlibsettings.ignore_adler32 = 1;
#endif
    unsigned width = 0, height = 0;
    if (lodepng_inspect(&width, &height, &state, data, size) != 0) return nullptr;
    if (!Format_SizeFits(width, height)) return nullptr;
    const LodePNGColorMode& fileMode = state.info_png.color;
    const uint64_t scanline = (uint64_t{width} * lodepng_get_bpp(&fileMode) + 7) / 8 + 1;
    if (scanline * height > kDeflateMaxRatio * size) return nullptr;

    // Decode in the file's own colour type, then convert once we know whether
    // the file carries transparency (tRNS comes after the header).
    state.decoder.color_convert = 0;
    unsigned char* raw = nullptr;
    const unsigned error = lodepng_decode(&raw, &width, &height, &state, data, size);
    LodeBuffer rawOwner(raw);
    if (error != 0 || !raw) return nullptr;

    const bool grey = lodepng_is_greyscale_type(&fileMode) != 0;
    const bool hasAlpha = lodepng_can_have_alpha(&fileMode) != 0;
    const bool wide = fileMode.bitdepth == 16;
    LodePNGColorMode target;
    lodepng_color_mode_init(&target);
    target.colortype = grey ? (hasAlpha ? LCT_GREY_ALPHA : LCT_GREY) : (hasAlpha ? LCT_RGBA : LCT_RGB);
    target.bitdepth = wide ? 16 : 8;
    const int channels = static_cast<int>(lodepng_get_channels(&target));
    const size_t outSize = lodepng_get_raw_size(width, height, &target);
    LodeBuffer converted(static_cast<unsigned char*>(std::malloc(outSize)));
    if (!converted) return nullptr;
    if (lodepng_convert(converted.get(), raw, &target, &fileMode, width, height) != 0) return nullptr;
    rawOwner.reset();

    ImagePtr image(Image_Create(static_cast<int32_t>(width), static_cast<int32_t>(height)));
    image->bitDepth = wide ? 16 : 8;
    image->maxValue = wide ? 65535 : 255;
    image->mono = grey ? 1 : 0;
    if (hasAlpha) {
        Image_AddAlpha(image.get());
        if (!image->alpha) return nullptr;
    }
    if (wide)
        CopyPixels<true>(converted.get(), image.get(), channels);
    else
        CopyPixels<false>(converted.get(), image.get(), channels);
    return image.release();
}

ImageBuffer* Png_Read(const char* path) {
    FileBytes file;
    if (!File_ReadAll(path, &file)) return nullptr;
    return Png_ReadMemory(file.data.get(), file.size);
}
