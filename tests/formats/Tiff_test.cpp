// TIFF reader and writer: the sample files (both byte orders, grey, RGB, RGBA,
// float, several strips; compressed, planar, tiled and BigTIFF refused), the
// float mapping, malformed and truncated files, the writer's exact layout and
// the round trip of the attachment.
#include "formats/TiffBuilder.h"
#include "formats/Tiff_Read.h"
#include "formats/Tiff_Write.h"
#include "image/Image.h"
#include "support/Manifest.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>

namespace {

struct Pixel {
    int x, y;
    int64_t r, g, b, a;  // a < 0: no alpha to check
};

int64_t At(const int64_t* plane, const ImageBuffer* image, int x, int y) {
    return plane[size_t(y) * size_t(image->stride) + size_t(x)];
}

void ExpectPixels(const ImageBuffer* image, const std::vector<Pixel>& pixels) {
    for (const Pixel& p : pixels) {
        SCOPED_TRACE(testing::Message() << "pixel " << p.x << "," << p.y);
        EXPECT_EQ(At(image->red, image, p.x, p.y), p.r);
        EXPECT_EQ(At(image->green, image, p.x, p.y), p.g);
        EXPECT_EQ(At(image->blue, image, p.x, p.y), p.b);
        if (p.a >= 0) {
            ASSERT_NE(image->alpha, nullptr);
            EXPECT_EQ(At(image->alpha, image, p.x, p.y), p.a);
        }
    }
}

std::vector<uint8_t> ReadBytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

ImagePtr ReadMemory(const std::vector<uint8_t>& bytes) {
    return ImagePtr(Tiff_ReadMemory(bytes.data(), bytes.size()));
}

class TempDir {
public:
    TempDir() {
        m_path = std::filesystem::temp_directory_path() /
                 ("pellucida_tiff_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
                  "_" + ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(m_path);
        std::filesystem::create_directories(m_path);
    }
    ~TempDir() { std::filesystem::remove_all(m_path); }
    std::string File(const char* name) const { return (m_path / name).string(); }
    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

// A test image of the given depth whose samples differ in every plane.
ImagePtr Pattern(int32_t width, int32_t height, int depth) {
    ImagePtr image(Image_Create(width, height));
    image->bitDepth = uint16_t(depth);
    image->maxValue = (int64_t{1} << depth) - 1;
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            const size_t i = size_t(y) * size_t(width) + size_t(x);
            image->red[i] = (int64_t(x) * 7919 + y * 104729) & image->maxValue;
            image->green[i] = (int64_t(x) * 31 + y * 1000003 + 5) & image->maxValue;
            image->blue[i] = image->maxValue - image->red[i];
        }
    return image;
}

}  // namespace

// ---------------------------------------------------------------------------
// Sample files

TEST(TiffSamples, EveryFileIsReadOrRefusedAsTheManifestSays) {
    PELLUCIDA_REQUIRE_DATA(manifest, "expected.json");
    Manifest_CheckEveryRead(
        "TIFF", 30, [](const std::string& path, const ManifestEntry&) { return Tiff_Read(path.c_str()); },
        [](const ManifestEntry& e, const ImageBuffer& image) {
            EXPECT_EQ(image.stride, e.width);
            EXPECT_EQ(image.mono, e.mono ? 1 : 0);
            ASSERT_GT(e.depth, 0);
            EXPECT_EQ(image.bitDepth, e.depth);
            EXPECT_EQ(image.maxValue, int64_t((uint64_t{1} << e.depth) - 1));
            EXPECT_EQ(image.alpha != nullptr, e.alpha);
            EXPECT_EQ(image.attachment, nullptr);
        });
}

TEST(TiffSamples, KnownPixelsInBothByteOrdersAndAllLayouts) {
    struct Case {
        const char* file;
        std::vector<Pixel> pixels;
    };
    const Case cases[] = {
        // Little-endian 8-bit RGB, one strip, a real astro image.
        {"tiff/astro/starnet_starless_rgb8_1048x712.tif",
         {{0, 0, 115, 51, 69, -1}, {523, 300, 151, 43, 65, -1}, {1047, 711, 178, 57, 80, -1}}},
        // Big-endian 32-bit unsigned grey and RGB, several strips.
        {"tiff/odd/imagetiff_flower-minisblack-32.tif",
         {{0, 0, 1455125979, 1455125979, 1455125979, -1}, {72, 42, 1152407765, 1152407765, 1152407765, -1}}},
        {"tiff/odd/imagetiff_flower-rgb-contig-32.tif",
         {{0, 0, 1489786731, 1487293910, 1198600246, -1},
          {36, 20, 1257472937, 1226459270, 485453981, -1},
          {72, 42, 1152914302, 1179705243, 1010517523, -1}}},
        // Big-endian 16-bit grey in 6 strips and RGB in 19 strips; 8-bit RGB.
        {"tiff/odd/imagetiff_minisblack-1c-16b.tiff",
         {{0, 0, 21909, 21909, 21909, -1},
          {80, 75, 9292, 9292, 9292, -1},
          {156, 150, 49003, 49003, 49003, -1}}},
        {"tiff/odd/imagetiff_rgb-3c-16b.tiff",
         {{0, 0, 41733, 13385, 13810, -1},
          {80, 75, 19825, 4949, 4028, -1},
          {156, 150, 45996, 52028, 41317, -1}}},
        {"tiff/odd/imagetiff_rgb-3c-8b.tiff",
         {{0, 0, 162, 52, 53, -1}, {80, 75, 77, 19, 15, -1}, {156, 150, 178, 202, 160, -1}}},
        // Little-endian 16-bit grey in 4 strips; no SamplesPerPixel tag.
        {"tiff/odd/imagetiff_seq-1c-16b-multistrip-68f373a0.tiff",
         {{0, 0, 0, 0, 0, -1}, {5, 9, 149, 149, 149, -1}, {15, 15, 255, 255, 255, -1}}},
        {"tiff/odd/pillow_16bit.cropped.tif", {{0, 0, 480, 480, 480, -1}, {63, 63, 357, 357, 357, -1}}},
        // RGBA: the fourth sample is the alpha plane (16-bit and 8-bit).
        {"tiff/odd/imagetiff_seq-4c-16b-rgba-5181991f.tiff",
         {{0, 0, 0, 1, 2, 3}, {5, 9, 596, 597, 598, 599}, {15, 15, 1020, 1021, 1022, 1023}}},
        {"tiff/odd/imagetiff_seq-4c-8b-rgba-unassoc-50969cda.tiff",
         {{0, 0, 0, 1, 2, 3}, {5, 9, 84, 85, 86, 87}, {15, 15, 252, 253, 254, 255}}},
        {"tiff/odd/pillow_pil136.tiff", {{0, 0, 0, 0, 0, 0}, {30, 20, 0, 0, 0, 255}}},
        // Several strips with a short last one; 7 strips of 21 rows.
        {"tiff/odd/pillow_tiff_strip_raw.tif",
         {{0, 0, 0, 0, 0, -1}, {139, 200, 228, 236, 247, -1}, {277, 373, 255, 255, 255, -1}}},
        {"tiff/odd/pillow_hopper.tif",
         {{0, 0, 20, 21, 67, -1}, {64, 100, 24, 18, 22, -1}, {127, 127, 134, 160, 209, -1}}},
        // The first of two directories.
        {"tiff/odd/libtiff_test_two_ifds.tif", {{0, 0, 107, 107, 107, -1}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        const std::string path = TestData_Path(c.file);
        if (path.empty()) GTEST_SKIP() << "sample data not found: " << c.file;
        ImagePtr image(Tiff_Read(path.c_str()));
        ASSERT_NE(image, nullptr);
        ExpectPixels(image.get(), c.pixels);
    }
}

TEST(TiffSamples, FloatFilesMapOntoTheirDepth) {
    // Largest value 0.998 (below 1): value x maxValue, maxValue = 2^32 - 1.
    PELLUCIDA_REQUIRE_DATA(gradient, "tiff/odd/imagetiff_gradient-1c-32b-float.tiff");
    ImagePtr g(Tiff_Read(gradient.c_str()));
    ASSERT_NE(g, nullptr);
    EXPECT_EQ(g->maxValue, 4294967295);
    ExpectPixels(g.get(), {{0, 0, 3837672, 3837672, 3837672, -1},
                           {128, 0, 2149297663, 2149297663, 2149297663, -1},
                           {255, 0, 4287516159, 4287516159, 4287516159, -1}});

    // Largest value exactly 1.0: no rescaling.
    PELLUCIDA_REQUIRE_DATA(rgb, "tiff/odd/imagetiff_seq-3c-32f-9a471c2b.tiff");
    ImagePtr c(Tiff_Read(rgb.c_str()));
    ASSERT_NE(c, nullptr);
    ExpectPixels(c.get(), {{0, 0, 0, 5599696, 11199393, -1},
                           {5, 9, 2503064319, 2508664063, 2514263807, -1},
                           {15, 15, 4283767807, 4289367551, 4294967295, -1}});

    // Half floats, every sample 1.0.
    PELLUCIDA_REQUIRE_DATA(half, "tiff/odd/imagetiff_white-fp16.tiff");
    ImagePtr h(Tiff_Read(half.c_str()));
    ASSERT_NE(h, nullptr);
    EXPECT_EQ(h->bitDepth, 16);
    ExpectPixels(h.get(), {{0, 0, 65535, 65535, 65535, -1}, {255, 255, 65535, 65535, 65535, -1}});
}

// ---------------------------------------------------------------------------
// Float mapping on assembled files

TEST(TiffFloat, LargestValueAboveOneScalesEverything_NanAndNegativesBecomeZero) {
    for (bool big : {false, true}) {
        SCOPED_TRACE(big ? "MM" : "II");
        TiffBuilder t(big);
        t.Basic(6, 1, 1, 32, 1, 3);
        std::vector<uint8_t> px;
        for (float f : {0.0f, 1.0f, 2.0f, 4.0f, -3.0f, std::numeric_limits<float>::quiet_NaN()})
            t.PutFloat(px, f);
        t.Pixels(px);
        ImagePtr image = ReadMemory(t.Build());
        ASSERT_NE(image, nullptr);
        const int64_t m = 4294967295;
        ExpectPixels(image.get(),
                     {{0, 0, 0, 0, 0, -1},
                      {1, 0, std::llround(m / 4.0), std::llround(m / 4.0), std::llround(m / 4.0), -1},
                      {2, 0, std::llround(m / 2.0), std::llround(m / 2.0), std::llround(m / 2.0), -1},
                      {3, 0, m, m, m, -1},
                      {4, 0, 0, 0, 0, -1},
                      {5, 0, 0, 0, 0, -1}});
    }
}

TEST(TiffFloat, InfinityIsTheMaximumAndDoesNotSetTheScale) {
    TiffBuilder t(false);
    t.Basic(3, 1, 1, 32, 1, 3);
    std::vector<uint8_t> px;
    for (float f : {0.5f, std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity()})
        t.PutFloat(px, f);
    t.Pixels(px);
    ImagePtr image = ReadMemory(t.Build());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->red[0], std::llround(0.5 * 4294967295.0));
    EXPECT_EQ(image->red[1], 4294967295);
    EXPECT_EQ(image->red[2], 0);
}

TEST(TiffFloat, HalfFloatsIncludingSubnormals) {
    TiffBuilder t(true);
    t.Basic(4, 1, 1, 16, 1, 3);
    std::vector<uint8_t> px;
    // 0.5, 0.25, the smallest subnormal 2^-24, and -1.
    for (uint16_t h : {0x3800, 0x3400, 0x0001, 0xBC00}) t.Put16(px, h);
    t.Pixels(px);
    ImagePtr image = ReadMemory(t.Build());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->bitDepth, 16);
    EXPECT_EQ(image->red[0], 32768);  // 0.5 x 65535 rounded
    EXPECT_EQ(image->red[1], 16384);
    EXPECT_EQ(image->red[2], 0);  // 65535 x 2^-24 rounds to 0
    EXPECT_EQ(image->red[3], 0);
}

// ---------------------------------------------------------------------------
// Layouts and refusals on assembled files

TEST(TiffLayouts, BothByteOrdersGiveTheSameImage) {
    for (uint32_t bits : {8u, 16u, 32u}) {
        SCOPED_TRACE(bits);
        ImagePtr images[2];
        for (int big = 0; big < 2; ++big) {
            TiffBuilder t(big != 0);
            t.Basic(3, 2, 3, bits, 2);
            std::vector<uint8_t> px;
            for (uint32_t i = 0; i < 18; ++i) {
                const uint32_t v = (i * 2654435761u) >> (32 - bits);
                if (bits == 8)
                    px.push_back(uint8_t(v));
                else if (bits == 16)
                    t.Put16(px, uint16_t(v));
                else
                    t.Put32(px, v);
            }
            t.Pixels(px, 7);  // strips that split samples
            images[big] = ReadMemory(t.Build());
            ASSERT_NE(images[big], nullptr);
        }
        for (int i = 0; i < 6; ++i) {
            const int64_t expected = int64_t(((uint32_t(i) * 3) * 2654435761u) >> (32 - bits));
            EXPECT_EQ(images[0]->red[i], expected);
            EXPECT_EQ(images[1]->red[i], expected);
            EXPECT_EQ(images[0]->blue[i], images[1]->blue[i]);
        }
        EXPECT_EQ(images[0]->bitDepth, bits);
        EXPECT_EQ(images[0]->mono, 0);
    }
}

TEST(TiffLayouts, WhiteIsZeroGreyIsTakenAsItIs) {
    TiffBuilder t(false);
    t.Basic(2, 1, 1, 8, 0);
    t.Pixels({10, 200});
    ImagePtr image = ReadMemory(t.Build());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->red[0], 10);
    EXPECT_EQ(image->blue[1], 200);
    EXPECT_EQ(image->mono, 1);
}

TEST(TiffLayouts, RefusedHeaders) {
    struct Case {
        const char* what;
        void (*edit)(TiffBuilder&);
    };
    const Case cases[] = {
        {"compression 5",
         [](TiffBuilder& t) {
             t.Basic(2, 2, 3, 8, 2);
             t.Entry(259, 3, {5});
         }},
        {"planar RGB",
         [](TiffBuilder& t) {
             t.Basic(2, 2, 3, 8, 2);
             t.Entry(284, 3, {2});
         }},
        {"tiled",
         [](TiffBuilder& t) {
             t.Basic(2, 2, 3, 8, 2);
             t.Entry(322, 3, {16});
         }},
        {"no photometric",
         [](TiffBuilder& t) {
             t.Entry(256, 3, {2});
             t.Entry(257, 3, {2});
             t.Entry(258, 3, {8});
         }},
        {"signed samples", [](TiffBuilder& t) { t.Basic(2, 2, 1, 16, 1, 2); }},
        {"64-bit float", [](TiffBuilder& t) { t.Basic(2, 2, 1, 64, 1, 3); }},
        {"8-bit float", [](TiffBuilder& t) { t.Basic(2, 2, 1, 8, 1, 3); }},
        {"float RGBA", [](TiffBuilder& t) { t.Basic(2, 2, 4, 32, 2, 3); }},
        {"32-bit RGBA", [](TiffBuilder& t) { t.Basic(2, 2, 4, 32, 2); }},
        {"RGBA without extra sample",
         [](TiffBuilder& t) {
             t.Entry(256, 3, {2});
             t.Entry(257, 3, {2});
             t.Entry(258, 3, {8, 8, 8, 8});
             t.Entry(262, 3, {2});
             t.Entry(277, 3, {4});
         }},
        {"two samples", [](TiffBuilder& t) { t.Basic(2, 2, 2, 8, 1); }},
        {"palette", [](TiffBuilder& t) { t.Basic(2, 2, 1, 8, 3); }},
        {"mixed bit depths",
         [](TiffBuilder& t) {
             t.Entry(256, 3, {2});
             t.Entry(257, 3, {2});
             t.Entry(258, 3, {8, 16, 8});
             t.Entry(262, 3, {2});
             t.Entry(277, 3, {3});
         }},
        {"1-bit grey", [](TiffBuilder& t) { t.Basic(2, 2, 1, 1, 1); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TiffBuilder t(false);
        c.edit(t);
        t.Pixels(std::vector<uint8_t>(256, 1));
        EXPECT_EQ(ReadMemory(t.Build()), nullptr);
    }
}

TEST(TiffLayouts, StripCountsMustMatchAndDataMustBeInTheFile) {
    {
        TiffBuilder t(false);
        t.Basic(4, 4, 1, 8, 1);
        t.Entry(273, 4, {100, 104});
        t.Entry(279, 4, {16});
        auto bytes = t.Build();
        bytes.resize(200, 0);
        EXPECT_EQ(ReadMemory(bytes), nullptr) << "offsets and counts differ in number";
    }
    {
        TiffBuilder t(false);
        t.Basic(4, 4, 1, 8, 1);
        t.Entry(273, 4, {1000});
        t.Entry(279, 4, {16});
        EXPECT_EQ(ReadMemory(t.Build()), nullptr) << "strip past the end";
    }
    {
        // A header announcing 60000 x 60000 pixels backed by 16 bytes is refused
        // before anything is allocated.
        TiffBuilder t(false);
        t.Basic(60000, 60000, 1, 8, 1);
        t.Pixels(std::vector<uint8_t>(16, 0));
        EXPECT_EQ(ReadMemory(t.Build()), nullptr);
    }
    {
        // Strips that all point at the same bytes cannot stand for a larger image.
        TiffBuilder t(false);
        t.Basic(64, 64, 1, 8, 1);
        t.Entry(273, 4, std::vector<uint32_t>(64, 8));
        t.Entry(279, 4, std::vector<uint32_t>(64, 64));
        auto bytes = t.Build();
        EXPECT_LT(bytes.size(), 64u * 64u);
        EXPECT_EQ(ReadMemory(bytes), nullptr);
    }
}

TEST(TiffLayouts, ScatteredStripsAreReadInOrder) {
    // Two strips stored after the header in reverse order.
    auto build = [](uint32_t first, uint32_t second) {
        TiffBuilder t(false);
        t.Basic(2, 2, 1, 8, 1);
        t.Entry(273, 4, {first, second});
        t.Entry(279, 4, {2, 2});
        return t.Build();
    };
    const uint32_t second = uint32_t(build(0, 0).size());
    auto bytes = build(second + 2, second);
    bytes.insert(bytes.end(), {30, 40, 10, 20});
    ImagePtr image = ReadMemory(bytes);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->red[0], 10);
    EXPECT_EQ(image->red[1], 20);
    EXPECT_EQ(image->red[2], 30);
    EXPECT_EQ(image->red[3], 40);
}

TEST(TiffStructure, BadByteOrderMagicOrBigTiffIsRefused) {
    TiffBuilder t(false);
    t.Basic(2, 1, 1, 8, 1);
    t.Pixels({1, 2});
    const auto good = t.Build();
    ASSERT_NE(ReadMemory(good), nullptr);
    auto bad = good;
    bad[0] = 'I';
    bad[1] = 'M';
    EXPECT_EQ(ReadMemory(bad), nullptr);
    bad = good;
    bad[2] = 43;  // BigTIFF
    EXPECT_EQ(ReadMemory(bad), nullptr);
    EXPECT_EQ(Tiff_ReadMemory(nullptr, 0), nullptr);
    EXPECT_EQ(Tiff_Read(nullptr), nullptr);
    EXPECT_EQ(Tiff_Read("/nonexistent/folder/x.tif"), nullptr);
}

TEST(TiffStructure, EveryTruncationOfAValidFileIsRefusedWithoutHarm) {
    TiffBuilder t(true);
    t.Basic(5, 3, 3, 16, 2);
    t.Pixels(std::vector<uint8_t>(5 * 3 * 6, 0x5A), 12);
    const auto bytes = t.Build();
    ASSERT_NE(ReadMemory(bytes), nullptr);
    for (size_t n = 0; n < bytes.size(); ++n) {
        std::vector<uint8_t> cut(bytes.begin(), bytes.begin() + long(n));
        EXPECT_EQ(ReadMemory(cut), nullptr) << "length " << n;
    }
}

TEST(TiffStructure, DirectoryChainThatLoopsEndsTheWalk) {
    // Directory at 8 with no image whose next offset points back at itself.
    std::vector<uint8_t> bytes = {'I',  'I',  42, 0, 8, 0, 0, 0, 1, 0,        // one entry
                                  0x0E, 0x01, 2,  0, 1, 0, 0, 0, 0, 0, 0, 0,  // ImageDescription
                                  8,    0,    0,  0};
    EXPECT_EQ(ReadMemory(bytes), nullptr);
    // Two directories pointing at each other.
    std::vector<uint8_t> two = {'I', 'I', 42, 0, 8, 0, 0, 0, 0, 0, 14, 0, 0, 0, 0, 0, 8, 0, 0, 0};
    EXPECT_EQ(ReadMemory(two), nullptr);
}

TEST(TiffStructure, ALaterDirectoryIsUsedWhenTheFirstHasNoImage) {
    TiffBuilder t(false);
    t.Basic(2, 1, 1, 8, 1);
    t.Pixels({7, 9});
    auto image = t.Build();
    // Prepend-free trick: make the header point to an empty directory at the end
    // of the file whose next offset is the real one at 8.
    const uint32_t empty = uint32_t(image.size());
    image.insert(image.end(), {0, 0, 8, 0, 0, 0});
    image[4] = uint8_t(empty);
    image[5] = uint8_t(empty >> 8);
    ImagePtr read = ReadMemory(image);
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->red[1], 9);
}

// ---------------------------------------------------------------------------
// Writer

namespace {

// The expected file, assembled here field by field from the fixed layout.
std::vector<uint8_t> ExpectedLayout(const ImageBuffer* image) {
    std::vector<uint8_t> out;
    auto u16 = [&](uint32_t v) {
        out.push_back(uint8_t(v));
        out.push_back(uint8_t(v >> 8));
    };
    auto u32 = [&](uint32_t v) {
        u16(v & 0xFFFF);
        u16(v >> 16);
    };
    const bool attach = image->attachment && image->attachmentSize > 0;
    const uint32_t entries = attach ? 13 : 12;
    const uint32_t xres = 8 + 2 + entries * 12 + 4;
    const uint32_t yres = xres + 8;
    const uint32_t bits = yres + 8;
    const uint32_t pixels = bits + 6;
    const uint32_t w = uint32_t(image->width), h = uint32_t(image->height);
    const uint32_t attachmentAt = pixels + w * h * 6;
    out = {'I', 'I', 42, 0, 8, 0, 0, 0};
    u16(entries);
    auto entry = [&](uint32_t tag, uint32_t type, uint32_t count, uint32_t value) {
        u16(tag);
        u16(type);
        u32(count);
        u32(value);
    };
    entry(256, 3, 1, w);
    entry(257, 3, 1, h);
    entry(258, 3, 3, bits);
    entry(259, 3, 1, 1);
    entry(262, 3, 1, 2);
    entry(273, 4, 1, pixels);
    entry(277, 3, 1, 3);
    entry(278, 4, 1, h);
    entry(279, 4, 1, w * h * 6);
    entry(282, 5, 1, xres);
    entry(283, 5, 1, yres);
    entry(296, 3, 1, 1);
    if (attach) entry(65000, 1, image->attachmentSize, attachmentAt);
    u32(0);
    u32(1);
    u32(1);
    u32(1);
    u32(1);
    u16(16);
    u16(16);
    u16(16);
    const int s = 16 - image->bitDepth;
    for (size_t i = 0; i < size_t(w) * h; ++i)
        for (const int64_t* plane : {image->red, image->green, image->blue}) {
            int64_t v = s > 0 ? plane[i] << s : plane[i] >> -s;
            u16(uint32_t(std::clamp<int64_t>(v, 0, 65535)));
        }
    if (attach) out.insert(out.end(), image->attachment, image->attachment + image->attachmentSize);
    return out;
}

void Attach(ImageBuffer* image, const std::vector<uint8_t>& bytes) {
    image->attachment = static_cast<uint8_t*>(std::malloc(bytes.size()));
    std::memcpy(image->attachment, bytes.data(), bytes.size());
    image->attachmentSize = uint32_t(bytes.size());
}

}  // namespace

TEST(TiffWriter, LayoutIsByteForByteTheFixedOne) {
    TempDir dir;
    for (int depth : {30, 16, 8}) {
        for (bool attach : {false, true}) {
            SCOPED_TRACE(testing::Message() << "depth " << depth << (attach ? " with attachment" : ""));
            ImagePtr image = Pattern(7, 5, depth);
            if (attach) Attach(image.get(), {'P', 'e', 'l', 1, 2, 3, 4, 5, 6, 0});
            const std::string path = dir.File("layout.tif");
            ASSERT_EQ(Tiff_Write(image.get(), path.c_str()), 1);
            EXPECT_EQ(ReadBytes(path), ExpectedLayout(image.get()));
        }
    }
}

TEST(TiffWriter, ThirtyBitSamplesShiftRightAndSaturate) {
    TempDir dir;
    ImagePtr image(Image_Create(3, 1));
    image->bitDepth = 30;
    image->maxValue = 1073741823;
    image->red[0] = 1073741823;
    image->green[0] = 16383;
    image->blue[0] = 16384;
    image->red[1] = 0;
    image->green[1] = int64_t{1} << 40;
    image->blue[1] = -5;
    image->red[2] = 1 << 20;
    image->green[2] = 1 << 29;
    image->blue[2] = 3 << 14;
    const std::string path = dir.File("shift.tif");
    ASSERT_EQ(Tiff_Write(image.get(), path.c_str()), 1);
    const auto bytes = ReadBytes(path);
    ASSERT_EQ(bytes.size(), 180u + 18u);
    auto sample = [&](int i) { return bytes[180 + 2 * i] | bytes[181 + 2 * i] << 8; };
    EXPECT_EQ(sample(0), 65535);
    EXPECT_EQ(sample(1), 0);
    EXPECT_EQ(sample(2), 1);
    EXPECT_EQ(sample(3), 0);
    EXPECT_EQ(sample(4), 65535);
    EXPECT_EQ(sample(5), 0);
    EXPECT_EQ(sample(6), 64);
    EXPECT_EQ(sample(7), 32768);
    EXPECT_EQ(sample(8), 3);
}

TEST(TiffWriter, RoundTripKeepsPixelsAndAttachment) {
    TempDir dir;
    for (size_t size : {size_t{1}, size_t{4}, size_t{5}, size_t{4099}}) {
        SCOPED_TRACE(size);
        ImagePtr image = Pattern(33, 17, 16);
        std::vector<uint8_t> block(size);
        for (size_t i = 0; i < size; ++i) block[i] = uint8_t(i * 37 + 11);
        Attach(image.get(), block);
        const std::string path = dir.File("round.tif");
        ASSERT_EQ(Tiff_Write(image.get(), path.c_str()), 1);
        ImagePtr back(Tiff_Read(path.c_str()));
        ASSERT_NE(back, nullptr);
        EXPECT_EQ(back->width, 33);
        EXPECT_EQ(back->height, 17);
        EXPECT_EQ(back->bitDepth, 16);
        EXPECT_EQ(back->mono, 0);
        EXPECT_EQ(back->alpha, nullptr);
        ASSERT_EQ(back->attachmentSize, size);
        EXPECT_TRUE(std::equal(block.begin(), block.end(), back->attachment));
        for (size_t i = 0; i < 33 * 17; ++i) {
            ASSERT_EQ(back->red[i], image->red[i]) << i;
            ASSERT_EQ(back->green[i], image->green[i]) << i;
            ASSERT_EQ(back->blue[i], image->blue[i]) << i;
        }
    }
}

TEST(TiffWriter, AlphaAndAuxAreNeverWritten) {
    TempDir dir;
    ImagePtr image = Pattern(4, 4, 16);
    Image_AddAlpha(image.get());
    Image_AddAux(image.get());
    const std::string path = dir.File("planes.tif");
    ASSERT_EQ(Tiff_Write(image.get(), path.c_str()), 1);
    EXPECT_EQ(ReadBytes(path).size(), 180u + 4 * 4 * 6);
}

TEST(TiffWriter, NullPathOrUncreatableFileFails) {
    TempDir dir;
    ImagePtr image = Pattern(2, 2, 16);
    EXPECT_EQ(Tiff_Write(image.get(), nullptr), 0);
    EXPECT_EQ(Tiff_Write(nullptr, dir.File("x.tif").c_str()), 0);
    EXPECT_EQ(Tiff_Write(image.get(), dir.File("missing/folder/x.tif").c_str()), 0);
    EXPECT_EQ(Tiff_Write(image.get(), dir.Path().string().c_str()), 0) << "a folder is not replaced";
    EXPECT_TRUE(std::filesystem::is_directory(dir.Path()));
}
