// PNG reader and writer on crafted files: palettes with and without
// transparency, low grey depths, grey with alpha, colour keys, refused and
// truncated files, and the 8-bit writer read back.
#include "formats/Png_Read.h"
#include "formats/Png_Write.h"
#include "image/Image.h"
#include "support/Files.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>
#include <lodepng.h>

#include <algorithm>
#include <array>
#include <vector>

namespace {

constexpr auto ReadMemory = ReadBytes<&Png_ReadMemory>;

// Encodes raw pixels exactly in the given mode (no automatic conversion),
// with the palette given and, when `keyed`, the colour key (1, 2, 3).
std::vector<uint8_t> Encode(const std::vector<uint8_t>& raw, unsigned w, unsigned h, LodePNGColorType type,
                            unsigned depth, const std::vector<std::array<uint8_t, 4>>& palette = {},
                            bool keyed = false) {
    lodepng::State state;
    for (LodePNGColorMode* mode : {&state.info_raw, &state.info_png.color}) {
        mode->colortype = type;
        mode->bitdepth = depth;
        for (const auto& c : palette) lodepng_palette_add(mode, c[0], c[1], c[2], c[3]);
        mode->key_defined = keyed;
        mode->key_r = 1;
        mode->key_g = 2;
        mode->key_b = 3;
    }
    state.encoder.auto_convert = 0;
    std::vector<uint8_t> out;
    const unsigned error = lodepng::encode(out, raw, w, h, state);
    EXPECT_EQ(error, 0u) << lodepng_error_text(error);
    return out;
}

using V = std::vector<int64_t>;

// What a crafted file must decode to.
struct Decoded {
    const char* what;
    std::vector<uint8_t> png;
    int mono, depth;
    V red, green = {}, blue = {}, alpha = {};  // grey: green and blue as red; alpha empty: no plane
};

}  // namespace

TEST(PngColourTypes, PalettesLowGreyDepthsGreyAlphaKeysAndSixteenBitRgb) {
    const std::vector<std::array<uint8_t, 4>> opaque = {{{10, 20, 30, 255}}, {{200, 100, 50, 255}}};
    const std::vector<std::array<uint8_t, 4>> clear = {{{10, 20, 30, 0}}, {{200, 100, 50, 255}}};
    const Decoded cases[] = {
        Decoded("palette", Encode({0, 1, 1, 0}, 4, 1, LCT_PALETTE, 8, opaque), 0, 8, {10, 200, 200, 10},
                {20, 100, 100, 20}, {30, 50, 50, 30}),
        // Two bits a pixel: indices 0, 1, 1, 0 packed into one byte.
        Decoded("palette with transparency", Encode({0x14}, 4, 1, LCT_PALETTE, 2, clear), 0, 8,
                {10, 200, 200, 10}, {20, 100, 100, 20}, {30, 50, 50, 30}, {0, 255, 255, 0}),
        Decoded("one-bit grey expands to eight bits", Encode({0x69}, 8, 1, LCT_GREY, 1), 1, 8,
                {0, 255, 255, 0, 255, 0, 0, 255}),
        Decoded("16-bit grey and alpha",
                Encode({0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0}, 2, 1, LCT_GREY_ALPHA, 16), 1, 16,
                {0x1234, 0x9ABC}, {}, {}, {0x5678, 0xDEF0}),
        Decoded("colour key", Encode({1, 2, 3, 4, 5, 6}, 2, 1, LCT_RGB, 8, {}, true), 0, 8, {1, 4}, {2, 5},
                {3, 6}, {0, 255}),
        Decoded("16-bit RGB", Encode({0xFF, 0xFE, 0, 1, 0x80, 0}, 1, 1, LCT_RGB, 16), 0, 16, {0xFFFE}, {1},
                {0x8000}),
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ImagePtr image = ReadMemory(c.png);
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(image->mono, c.mono);
        EXPECT_EQ(image->bitDepth, c.depth);
        const size_t n = c.red.size();
        // No alpha plane reads as empty.
        for (auto [plane, expected] : {std::pair{image->red, c.red},
                                       {image->green, c.mono ? c.red : c.green},
                                       {image->blue, c.mono ? c.red : c.blue},
                                       {image->alpha, c.alpha}})
            EXPECT_EQ(plane ? V(plane, plane + n) : V(), expected);
    }
}

TEST(PngRefused, DamagedOrImpossibleFiles) {
    const auto good = Encode(std::vector<uint8_t>(16 * 16 * 3, 77), 16, 16, LCT_RGB, 8);
    ASSERT_NE(ReadMemory(good), nullptr);
    for (size_t n = 0; n < good.size(); ++n)
        EXPECT_EQ(ReadMemory(std::vector<uint8_t>(good.begin(), good.begin() + long(n))), nullptr) << n;
    auto crc = good;
    crc[20] ^= 1;  // inside IHDR: its CRC no longer matches
    EXPECT_EQ(ReadMemory(crc), nullptr);

    // A header announcing 60000 x 60000 pixels in a file of a few hundred bytes
    // could never decode and is refused before anything is allocated.
    auto huge = good;
    const uint8_t side[4] = {0, 0, 0xEA, 0x60};                     // 60000, big-endian
    for (int i : {16, 20}) std::copy_n(side, 4, huge.begin() + i);  // width and height
    lodepng_chunk_generate_crc(huge.data() + 8);
    unsigned w = 0, h = 0;
    lodepng::State state;
    EXPECT_EQ(lodepng_inspect(&w, &h, &state, huge.data(), huge.size()), 0u) << "header itself valid";
    EXPECT_EQ(w, 60000u);
    EXPECT_EQ(ReadMemory(huge), nullptr);
}

TEST(PngWriter, WritesEightBitRgbThatReadsBack) {
    TempDir dir;
    const std::string path = dir.File("out.png");
    for (int depth : {30, 16, 8, 4}) {
        SCOPED_TRACE(depth);
        const int64_t max = (int64_t{1} << depth) - 1;
        ImagePtr image = MakeImage(5, 3, depth, [max](int32_t x, int32_t y, int c) {
            const int64_t v = (int64_t(y * 5 + x) * 0x9E3779B9) & max;
            return c == 0 ? v : c == 1 ? max - v : max;
        });
        image->red[0] = -1;  // out of range below clamps to 0
        Image_AddAlpha(image.get());
        ASSERT_EQ(Png_Write(image.get(), path.c_str()), 1);
        ImagePtr back(Png_Read(path.c_str()));
        ASSERT_NE(back, nullptr);
        EXPECT_EQ(back->bitDepth, 8);
        EXPECT_EQ(back->alpha, nullptr) << "alpha is not written";
        const int s = depth - 8;
        auto to8 = [s](int64_t v) { return std::clamp<int64_t>(s > 0 ? v >> s : v << -s, 0, 255); };
        for (int c = 0; c < 3; ++c)
            for (int i = 0; i < 15; ++i)
                EXPECT_EQ(Pixel(back.get(), c, i % 5, i / 5), to8(Pixel(image.get(), c, i % 5, i / 5))) << i;
    }
    EXPECT_EQ(Png_Write(nullptr, path.c_str()), 0);
}
