// TIFF reader and writer on assembled files: the float mapping, both byte
// orders, refused layouts, malformed and truncated files, the writer's exact
// layout and the round trip of the attachment.
#include "formats/TiffBuilder.h"
#include "formats/Tiff_Read.h"
#include "formats/Tiff_Write.h"
#include "image/Image.h"
#include "support/Files.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <tuple>

namespace {

ImagePtr ReadMemory(const std::vector<uint8_t>& bytes) {
    return ImagePtr(Tiff_ReadMemory(bytes.data(), bytes.size()));
}

}  // namespace

// ---------------------------------------------------------------------------
// Float mapping on assembled files

TEST(TiffFloat, LargestValueAboveOneScales_InfinityIsTheTop_NanNegativesAndSubnormalsAreZero) {
    auto f = [](float v) { return std::bit_cast<uint32_t>(v); };
    const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    const int64_t m = 4294967295;
    const struct {
        bool big;
        uint32_t bits;
        std::vector<uint32_t> samples;  // as stored
        std::vector<int64_t> expected;
    } cases[] = {
        {false, 32, {f(0), f(1), f(2), f(4), f(-3), f(nan)}, {0, 1073741824, 2147483648, m, 0, 0}},
        {true, 32, {f(0), f(1), f(2), f(4), f(-3), f(nan)}, {0, 1073741824, 2147483648, m, 0, 0}},
        // Infinity is the maximum but does not set the scale.
        {false, 32, {f(0.5f), f(inf), f(-inf)}, {2147483648, m, 0}},
        // Half floats 0.5, 0.25, the smallest subnormal 2^-24 (65535 x 2^-24
        // rounds to 0) and -1.
        {true, 16, {0x3800, 0x3400, 0x0001, 0xBC00}, {32768, 16384, 0, 0}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << (c.big ? "MM " : "II ") << c.bits);
        TiffBuilder t(c.big);
        t.Basic(uint32_t(c.samples.size()), 1, 1, c.bits, 1, 3);
        std::vector<uint8_t> px;
        for (uint32_t v : c.samples) c.bits == 16 ? t.Put16(px, uint16_t(v)) : t.Put32(px, v);
        t.Pixels(px);
        ImagePtr image = ReadMemory(t.Build());
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(image->bitDepth, c.bits);
        EXPECT_EQ(std::vector<int64_t>(image->red, image->red + c.samples.size()), c.expected);
    }
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
    EXPECT_EQ((std::vector<int64_t>{image->red[0], image->blue[1], image->mono}),
              (std::vector<int64_t>{10, 200, 1}));
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
    EXPECT_EQ(image->red[0], 10);
    EXPECT_EQ(image->red[1], 20);
    EXPECT_EQ(image->red[2], 30);
    EXPECT_EQ(image->red[3], 40);
}

TEST(TiffStructure, BadMagicLoopingDirectoriesAndEveryTruncationAreRefused) {
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
    for (uint32_t v : {0, 1, 1, 1, 1}) u32(v);  // no next directory; resolutions 1/1
    for (int i = 0; i < 3; ++i) u16(16);        // bits per sample
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

TEST(TiffWriter, LayoutIsByteForByteTheFixedOneAndReadsBack) {
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
            std::vector<uint8_t> block(size);
            for (size_t i = 0; i < size; ++i) block[i] = uint8_t(i * 37 + 11);
            if (size) Attach(image.get(), block);
            ASSERT_EQ(Tiff_Write(image.get(), path.c_str()), 1);
            EXPECT_EQ(ReadFileBytes(path), ExpectedLayout(image.get()));

            ImagePtr back(Tiff_Read(path.c_str()));
            ASSERT_NE(back, nullptr);
            EXPECT_EQ(back->bitDepth, 16);
            EXPECT_EQ(back->mono, 0);
            EXPECT_EQ(back->alpha, nullptr);
            ASSERT_EQ(back->attachmentSize, size);
            EXPECT_TRUE(std::equal(block.begin(), block.end(), back->attachment));
            if (depth == 16) {
                EXPECT_TRUE(std::equal(image->red, image->red + 35, back->red));
                EXPECT_TRUE(std::equal(image->green, image->green + 35, back->green));
                EXPECT_TRUE(std::equal(image->blue, image->blue + 35, back->blue));
            }
        }
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
