// TIFF reader and writer on assembled files: the float mapping, both byte
// orders, refused layouts, malformed and truncated files, the writer's exact
// layout and the round trip of the attachment.
#include "formats/TiffBuilder.h"
#include "formats/Tiff_Read.h"
#include "formats/Tiff_Write.h"
#include "image/Image.h"
#include "support/Files.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdlib>
#include <limits>
#include <tuple>

constexpr auto ReadMemory = ReadBytes<&Tiff_ReadMemory>;

// ---------------------------------------------------------------------------
// Sample values and layouts on assembled files

TEST(TiffSamples, BothByteOrdersWhiteIsZeroAndTheFloatMapping) {
    auto f = [](float v) { return std::bit_cast<uint32_t>(v); };
    const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    const int64_t m = 4294967295;
    // Grey pixels in a row, in strips of three bytes that split the samples.
    const struct {
        bool big;
        uint32_t bits, photometric, sampleFormat;
        std::vector<uint32_t> samples;  // as stored
        std::vector<int64_t> expected;
    } cases[] = {
        // Unsigned integers are taken as they are; so is white-is-zero grey.
        {false, 32, 1, 1, {0x89ABCDEF, 1, 0xFFFFFFFF}, {0x89ABCDEF, 1, m}},
        {true, 32, 1, 1, {0x89ABCDEF, 1, 0xFFFFFFFF}, {0x89ABCDEF, 1, m}},
        {false, 8, 0, 1, {10, 200}, {10, 200}},
        // Floats: the largest value above one scales, infinity is the top but
        // does not set the scale, NaN and negatives are 0.
        {false, 32, 1, 3, {f(0), f(1), f(2), f(4), f(-3), f(nan)}, {0, 1073741824, 2147483648, m, 0, 0}},
        {true, 32, 1, 3, {f(0), f(1), f(2), f(4), f(-3), f(nan)}, {0, 1073741824, 2147483648, m, 0, 0}},
        {false, 32, 1, 3, {f(0.5f), f(inf), f(-inf)}, {2147483648, m, 0}},
        // Half floats 0.5, 0.25, the smallest subnormal 2^-24 (65535 x 2^-24
        // rounds to 0) and -1.
        {true, 16, 1, 3, {0x3800, 0x3400, 0x0001, 0xBC00}, {32768, 16384, 0, 0}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << (c.big ? "MM " : "II ") << c.bits << " format " << c.sampleFormat);
        TiffBuilder t(c.big);
        t.Basic(uint32_t(c.samples.size()), 1, 1, c.bits, c.photometric, c.sampleFormat);
        std::vector<uint8_t> px;
        for (uint32_t v : c.samples) t.Put(px, v, int(c.bits / 8));
        t.Pixels(px, 3);
        ImagePtr image = ReadMemory(t.Build());
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(std::tuple(image->bitDepth, image->mono), std::tuple(c.bits, 1));
        EXPECT_EQ(std::vector<int64_t>(image->red, image->red + c.samples.size()), c.expected);
        EXPECT_EQ(std::vector<int64_t>(image->blue, image->blue + c.samples.size()), c.expected);
    }
}

// A header of Basic() with some tags replaced (no values: removed), over 256
// bytes of pixels in one strip unless the strips are given.
struct Refused {
    const char* what;
    uint32_t width, height, samples, bits, photometric, sampleFormat;
    std::vector<std::tuple<uint16_t, uint16_t, std::vector<uint32_t>>> entries = {};
    bool pixels = true;
};

TEST(TiffLayouts, RefusedHeaders) {
    // Compressed, planar, tiled, signed and BigTIFF files are refused seeds of the fuzz corpus.
    const Refused cases[] = {
        Refused("no photometric", 2, 2, 1, 8, 1, 1, {{262, 3, {}}}),
        Refused("64-bit float", 2, 2, 1, 64, 1, 3),
        Refused("8-bit float", 2, 2, 1, 8, 1, 3),
        Refused("float RGBA", 2, 2, 4, 32, 2, 3),
        Refused("32-bit RGBA", 2, 2, 4, 32, 2, 1),
        Refused("RGBA without extra sample", 2, 2, 4, 8, 2, 1, {{338, 3, {}}}),
        Refused("two samples", 2, 2, 2, 8, 1, 1),
        Refused("palette", 2, 2, 1, 8, 3, 1),
        Refused("mixed bit depths", 2, 2, 3, 8, 2, 1, {{258, 3, {8, 16, 8}}}),
        Refused("1-bit grey", 2, 2, 1, 1, 1, 1),
        // The strips' data must be in the file, and there before anything is
        // allocated for the size the header announces.
        Refused("offsets and counts differ in number", 4, 4, 1, 8, 1, 1, {{273, 4, {8, 12}}, {279, 4, {16}}},
                false),
        Refused("strip past the end", 4, 4, 1, 8, 1, 1, {{273, 4, {1000}}, {279, 4, {16}}}, false),
        Refused("60000 x 60000 pixels in a few hundred bytes", 60000, 60000, 1, 8, 1, 1),
        Refused("strips that all point at the same bytes", 64, 64, 1, 8, 1, 1,
                {{273, 4, std::vector<uint32_t>(64, 8)}, {279, 4, std::vector<uint32_t>(64, 64)}}, false),
    };
    for (const Refused& c : cases) {
        SCOPED_TRACE(c.what);
        TiffBuilder t(false);
        t.Basic(c.width, c.height, c.samples, c.bits, c.photometric, c.sampleFormat);
        for (const auto& [tag, type, values] : c.entries) t.Entry(tag, type, values);
        if (c.pixels) t.Pixels(std::vector<uint8_t>(256, 1));
        EXPECT_EQ(ReadMemory(t.Build()), nullptr);
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
    EXPECT_EQ(std::vector<int64_t>(image->red, image->red + 4), (std::vector<int64_t>{10, 20, 30, 40}));
}

TEST(TiffStructure, BadMagicLoopingDirectoriesAndEveryTruncationAreRefusedALaterDirectoryIsRead) {
    TiffBuilder t(true);
    t.Basic(5, 3, 3, 16, 2);
    t.Pixels(std::vector<uint8_t>(5 * 3 * 6, 0x5A), 12);
    const auto good = t.Build();
    ASSERT_NE(ReadMemory(good), nullptr);
    for (size_t n = 0; n < good.size(); ++n)
        EXPECT_EQ(ReadMemory(std::vector<uint8_t>(good.begin(), good.begin() + long(n))), nullptr)
            << "length " << n;
    auto bad = good;
    bad[1] = 'I';  // "MI"
    EXPECT_EQ(ReadMemory(bad), nullptr);

    // A directory at 8 with no image whose next offset points back at itself,
    // and two directories pointing at each other.
    EXPECT_EQ(
        ReadMemory({'I', 'I', 42, 0, 8, 0, 0, 0, 1, 0, 0x0E, 0x01, 2, 0, 1, 0, 0, 0, 0, 0, 0, 0, 8, 0, 0, 0}),
        nullptr);
    EXPECT_EQ(ReadMemory({'I', 'I', 42, 0, 8, 0, 0, 0, 0, 0, 14, 0, 0, 0, 0, 0, 8, 0, 0, 0}), nullptr);

    // A later directory is used when the first has no image.
    TiffBuilder later(false);
    later.Basic(2, 1, 1, 8, 1);
    later.Pixels({7, 9});
    auto image = later.Build();
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

// A test image of the given depth whose samples differ in every plane.
ImagePtr Pattern(int32_t width, int32_t height, int depth) {
    const int64_t max = (int64_t{1} << depth) - 1;
    return MakeImage(width, height, depth, [max](int32_t x, int32_t y, int c) {
        const int64_t red = (int64_t(x) * 7919 + y * 104729) & max;
        return c == 0 ? red : c == 1 ? (int64_t(x) * 31 + y * 1000003 + 5) & max : max - red;
    });
}

// The expected file, assembled here field by field from the fixed layout.
std::vector<uint8_t> ExpectedLayout(const ImageBuffer* image) {
    const TiffBuilder le(false);
    const bool attach = image->attachment && image->attachmentSize > 0;
    const uint32_t entries = attach ? 13 : 12;
    const uint32_t xres = 8 + 2 + entries * 12 + 4, yres = xres + 8, bits = yres + 8, pixels = bits + 6;
    const uint32_t w = uint32_t(image->width), h = uint32_t(image->height), size = w * h * 6;
    const uint32_t extra = image->attachmentSize, after = pixels + size;
    // Tag, type, count, value; the attachment's entry comes only with one.
    const uint32_t directory[13][4] = {
        {256, 3, 1, w},      {257, 3, 1, h}, {258, 3, 3, bits},       {259, 3, 1, 1},    {262, 3, 1, 2},
        {273, 4, 1, pixels}, {277, 3, 1, 3}, {278, 4, 1, h},          {279, 4, 1, size}, {282, 5, 1, xres},
        {283, 5, 1, yres},   {296, 3, 1, 1}, {65000, 1, extra, after}};
    std::vector<uint8_t> out = {'I', 'I', 42, 0, 8, 0, 0, 0};
    le.Put(out, entries, 2);
    for (uint32_t e = 0; e < entries; ++e)
        for (int k = 0; k < 4; ++k) le.Put(out, directory[e][k], k < 2 ? 2 : 4);  // tag and type are shorts
    for (uint32_t v : {0, 1, 1, 1, 1}) le.Put(out, v, 4);  // no next directory; resolutions 1/1
    for (int i = 0; i < 3; ++i) le.Put(out, 16, 2);        // bits per sample
    const int s = 16 - image->bitDepth;
    for (size_t i = 0; i < size_t(w) * h; ++i)
        for (const int64_t* plane : {image->red, image->green, image->blue})
            le.Put(out, uint32_t(std::clamp<int64_t>(s > 0 ? plane[i] << s : plane[i] >> -s, 0, 65535)), 2);
    if (attach) out.insert(out.end(), image->attachment, image->attachment + image->attachmentSize);
    return out;
}

}  // namespace

TEST(TiffWriter, LayoutIsByteForByteTheFixedOneReadsBackAndBadTargetsFail) {
    TempDir dir;
    const std::string path = dir.File("out.tif");
    for (int depth : {30, 16, 8})
        for (size_t size : {size_t{0}, size_t{1}, size_t{4}, size_t{5}, size_t{4099}}) {
            SCOPED_TRACE(testing::Message() << "depth " << depth << ", attachment of " << size);
            ImagePtr image = Pattern(7, 5, depth);
            if (depth == 30) {
                image->green[1] = int64_t{1} << 40;  // saturates
                image->blue[1] = -5;                 // held at 0
            }
            Image_AddAlpha(image.get());  // neither alpha nor aux is ever written
            Image_AddAux(image.get());
            if (size) image->attachment = static_cast<uint8_t*>(std::malloc(size));
            for (size_t i = 0; i < size; ++i) image->attachment[i] = uint8_t(i * 37 + 11);
            image->attachmentSize = uint32_t(size);
            ASSERT_EQ(Tiff_Write(image.get(), path.c_str()), 1);
            EXPECT_EQ(ReadFileBytes(path), ExpectedLayout(image.get()));

            ImagePtr back(Tiff_Read(path.c_str()));
            ASSERT_NE(back, nullptr);
            EXPECT_EQ(std::tuple(back->bitDepth, back->mono, back->alpha), std::tuple(16, 0, nullptr));
            ASSERT_EQ(back->attachmentSize, size);
            EXPECT_TRUE(std::equal(image->attachment, image->attachment + size, back->attachment));
            if (depth != 16) continue;  // other depths are rescaled to 16 bits
            for (auto [written, read] :
                 {std::pair{image->red, back->red}, {image->green, back->green}, {image->blue, back->blue}})
                EXPECT_TRUE(std::equal(written, written + 35, read));
        }

    // No image, no path, a folder that is not there or a folder as the target.
    ImagePtr image = Pattern(2, 2, 16);
    EXPECT_EQ(Tiff_Write(image.get(), nullptr), 0);
    EXPECT_EQ(Tiff_Write(nullptr, dir.File("x.tif").c_str()), 0);
    EXPECT_EQ(Tiff_Write(image.get(), dir.File("missing/folder/x.tif").c_str()), 0);
    EXPECT_EQ(Tiff_Write(image.get(), dir.Path().string().c_str()), 0) << "a folder is not replaced";
    EXPECT_TRUE(std::filesystem::is_directory(dir.Path()));
}
