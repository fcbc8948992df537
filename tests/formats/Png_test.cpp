// PNG reader and writer: the sample files (8 and 16 bits, grey, RGB, RGBA),
// palettes with and without transparency, low grey depths, colour keys,
// refused and truncated files, and the 8-bit writer read back.
#include "formats/Png_Read.h"
#include "formats/Png_Write.h"
#include "image/Image.h"
#include "support/Manifest.h"
#include "support/TestData.h"

#include <gtest/gtest.h>
#include <lodepng.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <vector>

namespace {

ImagePtr ReadMemory(const std::vector<uint8_t>& bytes) {
    return ImagePtr(Png_ReadMemory(bytes.data(), bytes.size()));
}

struct Key {
    bool defined = false;
    unsigned r = 0, g = 0, b = 0;
};

// Encodes raw pixels exactly in the given mode (no automatic conversion).
std::vector<uint8_t> Encode(const std::vector<uint8_t>& raw, unsigned w, unsigned h, LodePNGColorType type,
                            unsigned depth, const std::vector<std::array<uint8_t, 4>>& palette = {},
                            Key key = {}) {
    LodePNGState state;
    lodepng_state_init(&state);
    for (LodePNGColorMode* mode : {&state.info_raw, &state.info_png.color}) {
        mode->colortype = type;
        mode->bitdepth = depth;
        for (const auto& c : palette) lodepng_palette_add(mode, c[0], c[1], c[2], c[3]);
        mode->key_defined = key.defined;
        mode->key_r = key.r;
        mode->key_g = key.g;
        mode->key_b = key.b;
    }
    state.encoder.auto_convert = 0;
    unsigned char* out = nullptr;
    size_t size = 0;
    const unsigned error = lodepng_encode(&out, &size, raw.data(), w, h, &state);
    std::vector<uint8_t> bytes;
    if (!error) bytes.assign(out, out + size);
    std::free(out);
    lodepng_state_cleanup(&state);
    EXPECT_EQ(error, 0u) << lodepng_error_text(error);
    return bytes;
}

int64_t At(const int64_t* plane, const ImageBuffer* image, int x, int y) {
    return plane[size_t(y) * size_t(image->stride) + size_t(x)];
}

}  // namespace

TEST(PngSamples, EveryFileIsReadAsTheManifestSays) {
    PELLUCIDA_REQUIRE_DATA(manifest, "expected.json");
    Manifest_CheckEveryRead(
        "PNG", 9, [](const std::string& path, const ManifestEntry&) { return Png_Read(path.c_str()); },
        [](const ManifestEntry& e, const ImageBuffer& image) {
            EXPECT_EQ(image.mono, e.mono ? 1 : 0);
            EXPECT_EQ(image.alpha != nullptr, e.alpha);
            const bool wide = e.file.find("16") != std::string::npos;
            EXPECT_EQ(image.bitDepth, wide ? 16 : 8);
            EXPECT_EQ(image.maxValue, wide ? 65535 : 255);
        });
}

TEST(PngSamples, KnownPixels) {
    struct Case {
        const char* file;
        int x, y;
        int64_t r, g, b, a;  // a < 0: no alpha plane
    };
    const Case cases[] = {
        {"png/eso1723a_avm_320.png", 0, 0, 2, 0, 1, -1},
        {"png/eso1723a_avm_320.png", 160, 124, 137, 120, 126, -1},
        {"png/eso1723a_avm_320.png", 319, 247, 13, 0, 0, -1},
        {"png/libvips_sample_rgb16.png", 0, 0, 49210, 41207, 29445, -1},
        {"png/libvips_sample_rgb16.png", 145, 221, 16382, 19308, 28635, -1},
        {"png/libvips_sample_rgb16.png", 289, 441, 28156, 23698, 15306, -1},
        {"png/pillow_grey16_tiny.png", 0, 0, 65535, 65535, 65535, -1},
        {"png/pillow_grey16_tiny.png", 10, 50, 32437, 32437, 32437, -1},
        {"png/pillow_grey16_tiny.png", 19, 99, 0, 0, 0, -1},
        {"png/stellarium_ic410_rgba8.png", 256, 256, 55, 71, 78, 255},
        {"png/stellarium_m49_grey8.png", 0, 0, 3, 3, 3, -1},
        {"png/stellarium_m49_grey8.png", 128, 128, 152, 152, 152, -1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.file << " " << c.x << "," << c.y);
        const std::string path = TestData_Path(c.file);
        if (path.empty()) GTEST_SKIP() << "sample data not found: " << c.file;
        ImagePtr image(Png_Read(path.c_str()));
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(At(image->red, image.get(), c.x, c.y), c.r);
        EXPECT_EQ(At(image->green, image.get(), c.x, c.y), c.g);
        EXPECT_EQ(At(image->blue, image.get(), c.x, c.y), c.b);
        if (c.a >= 0) {
            ASSERT_NE(image->alpha, nullptr);
            EXPECT_EQ(At(image->alpha, image.get(), c.x, c.y), c.a);
        }
    }
}

TEST(PngColourTypes, PaletteWithAndWithoutTransparency) {
    const std::vector<std::array<uint8_t, 4>> opaque = {{{10, 20, 30, 255}}, {{200, 100, 50, 255}}};
    ImagePtr plain = ReadMemory(Encode({0, 1, 1, 0}, 4, 1, LCT_PALETTE, 8, opaque));
    ASSERT_NE(plain, nullptr);
    EXPECT_EQ(plain->alpha, nullptr);
    EXPECT_EQ(plain->mono, 0);
    EXPECT_EQ(plain->bitDepth, 8);
    EXPECT_EQ(plain->red[1], 200);
    EXPECT_EQ(plain->blue[3], 30);

    const std::vector<std::array<uint8_t, 4>> clear = {{{10, 20, 30, 0}}, {{200, 100, 50, 255}}};
    // Two bits a pixel: indices 0, 1, 1, 0 packed into one byte.
    ImagePtr alpha = ReadMemory(Encode({0x14}, 4, 1, LCT_PALETTE, 2, clear));
    ASSERT_NE(alpha, nullptr);
    ASSERT_NE(alpha->alpha, nullptr);
    EXPECT_EQ(alpha->alpha[0], 0);
    EXPECT_EQ(alpha->alpha[1], 255);
    EXPECT_EQ(alpha->green[2], 100);
}

TEST(PngColourTypes, LowGreyDepthsExpandToEightBits) {
    // One bit a pixel, 0 1 1 0 1 0 0 1.
    ImagePtr image = ReadMemory(Encode({0x69}, 8, 1, LCT_GREY, 1));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->mono, 1);
    EXPECT_EQ(image->bitDepth, 8);
    const int64_t expected[] = {0, 255, 255, 0, 255, 0, 0, 255};
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(image->red[i], expected[i]) << i;
        EXPECT_EQ(image->blue[i], expected[i]) << i;
    }
}

TEST(PngColourTypes, GreyAlphaAndColourKeys) {
    ImagePtr ga =
        ReadMemory(Encode({0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0}, 2, 1, LCT_GREY_ALPHA, 16));
    ASSERT_NE(ga, nullptr);
    EXPECT_EQ(ga->mono, 1);
    EXPECT_EQ(ga->bitDepth, 16);
    EXPECT_EQ(ga->red[0], 0x1234);
    ASSERT_NE(ga->alpha, nullptr);
    EXPECT_EQ(ga->alpha[0], 0x5678);
    EXPECT_EQ(ga->alpha[1], 0xDEF0);

    Key key{true, 1, 2, 3};
    ImagePtr keyed = ReadMemory(Encode({1, 2, 3, 4, 5, 6}, 2, 1, LCT_RGB, 8, {}, key));
    ASSERT_NE(keyed, nullptr);
    ASSERT_NE(keyed->alpha, nullptr);
    EXPECT_EQ(keyed->alpha[0], 0);
    EXPECT_EQ(keyed->alpha[1], 255);
    EXPECT_EQ(keyed->blue[1], 6);

    ImagePtr rgb16 = ReadMemory(Encode({0xFF, 0xFE, 0, 1, 0x80, 0}, 1, 1, LCT_RGB, 16));
    ASSERT_NE(rgb16, nullptr);
    EXPECT_EQ(rgb16->alpha, nullptr);
    EXPECT_EQ(rgb16->red[0], 0xFFFE);
    EXPECT_EQ(rgb16->green[0], 1);
    EXPECT_EQ(rgb16->blue[0], 0x8000);
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
    for (int i : {16, 20}) {
        huge[i] = 0;
        huge[i + 1] = 0;
        huge[i + 2] = 0xEA;
        huge[i + 3] = 0x60;
    }
    lodepng_chunk_generate_crc(huge.data() + 8);
    unsigned w = 0, h = 0;
    LodePNGState state;
    lodepng_state_init(&state);
    EXPECT_EQ(lodepng_inspect(&w, &h, &state, huge.data(), huge.size()), 0u) << "header itself valid";
    lodepng_state_cleanup(&state);
    EXPECT_EQ(w, 60000u);
    EXPECT_EQ(ReadMemory(huge), nullptr);
    EXPECT_EQ(Png_ReadMemory(nullptr, 0), nullptr);
    EXPECT_EQ(Png_Read("/nonexistent/x.png"), nullptr);
}

TEST(PngWriter, WritesEightBitRgbThatReadsBack) {
    const auto dir = std::filesystem::temp_directory_path() / "pellucida_png_writer";
    std::filesystem::create_directories(dir);
    const std::string path = (dir / "out.png").string();
    for (int depth : {30, 16, 8, 4}) {
        SCOPED_TRACE(depth);
        ImagePtr image(Image_Create(5, 3));
        image->bitDepth = uint16_t(depth);
        image->maxValue = (int64_t{1} << depth) - 1;
        for (int i = 0; i < 15; ++i) {
            image->red[i] = (int64_t(i) * 0x9E3779B9) & image->maxValue;
            image->green[i] = image->maxValue - image->red[i];
            image->blue[i] = image->maxValue;
        }
        image->red[0] = -1;  // out of range below clamps to 0
        Image_AddAlpha(image.get());
        ASSERT_EQ(Png_Write(image.get(), path.c_str()), 1);
        ImagePtr back(Png_Read(path.c_str()));
        ASSERT_NE(back, nullptr);
        EXPECT_EQ(back->bitDepth, 8);
        EXPECT_EQ(back->alpha, nullptr) << "alpha is not written";
        for (int i = 0; i < 15; ++i) {
            const int s = depth - 8;
            auto to8 = [&](int64_t v) { return std::clamp<int64_t>(s > 0 ? v >> s : v << -s, 0, 255); };
            EXPECT_EQ(back->red[i], to8(image->red[i])) << i;
            EXPECT_EQ(back->green[i], to8(image->green[i])) << i;
            EXPECT_EQ(back->blue[i], to8(image->blue[i])) << i;
        }
    }
    EXPECT_EQ(Png_Write(nullptr, path.c_str()), 0);
    std::filesystem::remove_all(dir);
}
