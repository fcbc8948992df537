// JPEG reader and writer: the sample files (baseline with APP0/1/2/12/13/14
// segments read, the progressive one refused), the marker scan on edited
// files, decoded pixels against the same picture in PNG, truncation, and the
// writer's quality and read-back.
#include "formats/Jpeg_Read.h"
#include "formats/Jpeg_Write.h"
#include "formats/Png_Read.h"
#include "image/Image.h"
#include "support/Manifest.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

std::vector<uint8_t> ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

ImagePtr ReadMemory(const std::vector<uint8_t>& bytes) {
    return ImagePtr(Jpeg_ReadMemory(bytes.data(), bytes.size()));
}

// Position of the first marker `code` found by walking the segments.
size_t FindMarker(const std::vector<uint8_t>& bytes, uint8_t code) {
    size_t at = 2;
    while (at + 3 < bytes.size() && bytes[at] == 0xFF) {
        if (bytes[at + 1] == code) return at;
        at += 2 + (size_t(bytes[at + 2]) << 8 | bytes[at + 3]);
    }
    return std::string::npos;
}

// A smooth test picture written by the program's own writer, as file bytes.
std::vector<uint8_t> WrittenJpeg(const std::filesystem::path& dir, int width, int height) {
    ImagePtr image(Image_Create(width, height));
    image->bitDepth = 8;
    image->maxValue = 255;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const size_t i = size_t(y) * size_t(width) + size_t(x);
            image->red[i] = x * 255 / (width - 1);
            image->green[i] = y * 255 / (height - 1);
            image->blue[i] = 128;
        }
    const std::string path = (dir / "w.jpg").string();
    EXPECT_EQ(Jpeg_Write(image.get(), path.c_str()), 1);
    return ReadBytes(path);
}

class JpegFiles : public testing::Test {
protected:
    void SetUp() override {
        m_dir = std::filesystem::temp_directory_path() / "pellucida_jpeg_test";
        std::filesystem::create_directories(m_dir);
    }
    void TearDown() override { std::filesystem::remove_all(m_dir); }
    std::filesystem::path m_dir;
};

}  // namespace

TEST(JpegSamples, EveryFileIsReadOrRefusedAsTheManifestSays) {
    PELLUCIDA_REQUIRE_DATA(manifest, "expected.json");
    Manifest_CheckEveryRead(
        "JPEG", 6,
        [](const std::string& path, const ManifestEntry& e) {
            const std::vector<uint8_t> bytes = ReadBytes(path);
            EXPECT_EQ(Jpeg_IsBaseline(bytes.data(), bytes.size()), !e.refused);
            return Jpeg_Read(path.c_str());
        },
        [](const ManifestEntry& e, const ImageBuffer& image) {
            EXPECT_EQ(image.bitDepth, e.depth);
            EXPECT_EQ(image.maxValue, 255);
            EXPECT_EQ(image.mono, e.mono ? 1 : 0);
            EXPECT_EQ(image.alpha, nullptr);
        });
}

TEST(JpegSamples, DecodesTheSamePictureAsItsPngTwin) {
    // The ESO press image was published as both JPEG and PNG at 320 x 248.
    PELLUCIDA_REQUIRE_DATA(jpg, "jpeg/eso1723a_avm_320.jpg");
    PELLUCIDA_REQUIRE_DATA(png, "png/eso1723a_avm_320.png");
    ImagePtr a(Jpeg_Read(jpg.c_str()));
    ImagePtr b(Png_Read(png.c_str()));
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    ASSERT_EQ(a->width, b->width);
    ASSERT_EQ(a->height, b->height);
    double total = 0;
    const size_t n = size_t(a->width) * size_t(a->height);
    for (size_t i = 0; i < n; ++i)
        total += std::abs(double(a->red[i] - b->red[i])) + std::abs(double(a->green[i] - b->green[i])) +
                 std::abs(double(a->blue[i] - b->blue[i]));
    const double mean = total / double(3 * n);
    RecordProperty("mean_abs_difference", std::to_string(mean));
    EXPECT_LT(mean, 1.0);  // measured 0.29: the two files differ only by JPEG loss
}

TEST(JpegMarkers, ProgressiveAndOtherFramesAreRefusedBeforeDecoding) {
    PELLUCIDA_REQUIRE_DATA(path, "jpeg/eso1723a_avm_320.jpg");
    const auto good = ReadBytes(path);
    ASSERT_NE(ReadMemory(good), nullptr);
    const size_t sof = FindMarker(good, 0xC0);
    ASSERT_NE(sof, std::string::npos);
    for (uint8_t frame : {0xC1, 0xC2, 0xC3, 0xC9, 0xCA}) {
        auto edited = good;
        edited[sof + 1] = frame;
        EXPECT_FALSE(Jpeg_IsBaseline(edited.data(), edited.size())) << int(frame);
        EXPECT_EQ(ReadMemory(edited), nullptr) << int(frame);
    }
    auto noFrame = good;
    noFrame[sof + 1] = 0xFE;  // the frame header becomes a comment
    EXPECT_EQ(ReadMemory(noFrame), nullptr);
    auto noSoi = good;
    noSoi[1] = 0xD9;
    EXPECT_EQ(ReadMemory(noSoi), nullptr);
}

TEST_F(JpegFiles, ApplicationSegmentsAreSkippedByTheirLength) {
    auto bytes = WrittenJpeg(m_dir, 32, 16);
    ASSERT_NE(ReadMemory(bytes), nullptr);
    // An APP1 segment whose payload looks like a progressive frame header.
    const std::vector<uint8_t> app = {0xFF, 0xE1, 0x00, 0x08, 0xFF, 0xC2, 0x00, 0x11, 0xFF, 0xC2};
    bytes.insert(bytes.begin() + 2, app.begin(), app.end());
    EXPECT_TRUE(Jpeg_IsBaseline(bytes.data(), bytes.size()));
    ImagePtr image = ReadMemory(bytes);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->width, 32);
}

TEST_F(JpegFiles, EveryTruncationIsHandledWithoutHarm) {
    const auto bytes = WrittenJpeg(m_dir, 24, 24);
    const size_t sos = FindMarker(bytes, 0xDA);
    ASSERT_NE(sos, std::string::npos);
    for (size_t n = 0; n < bytes.size(); ++n) {
        ImagePtr image = ReadMemory(std::vector<uint8_t>(bytes.begin(), bytes.begin() + long(n)));
        // Cut before the scan there is nothing to decode; after it stb fills
        // what is missing, so only the size is promised.
        if (n <= sos) {
            EXPECT_EQ(image, nullptr) << n;
        }
        if (image) {
            EXPECT_EQ(image->width, 24);
        }
    }
}

TEST_F(JpegFiles, WriterUsesQuality85AndReadsBack) {
    const auto bytes = WrittenJpeg(m_dir, 64, 48);
    // Quality 85 scales the standard luminance table by 30%: its first entry,
    // 16, becomes (16 x 30 + 50) / 100 = 5.
    const size_t dqt = FindMarker(bytes, 0xDB);
    ASSERT_NE(dqt, std::string::npos);
    EXPECT_EQ(bytes[dqt + 4] & 0x0F, 0) << "table 0 first";
    EXPECT_EQ(bytes[dqt + 5], 5);
    EXPECT_TRUE(Jpeg_IsBaseline(bytes.data(), bytes.size()));
    ImagePtr image = ReadMemory(bytes);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->width, 64);
    EXPECT_EQ(image->height, 48);
    EXPECT_EQ(image->mono, 0);
    // A smooth ramp survives within a few levels.
    EXPECT_NEAR(double(image->red[0]), 0.0, 4.0);
    EXPECT_NEAR(double(image->red[63]), 255.0, 4.0);
    EXPECT_NEAR(double(image->green[47 * 64]), 255.0, 4.0);
    EXPECT_NEAR(double(image->blue[30 * 64 + 30]), 128.0, 4.0);
}

TEST_F(JpegFiles, HuffmanTablesWithMoreThan256CodesAreRefused) {
    // stb writes past its tables on such a file (found by fuzzing), so the
    // marker walk must stop it, before the scan and between scans alike.
    auto bytes = WrittenJpeg(m_dir, 16, 16);
    const size_t dht = FindMarker(bytes, 0xC4);
    ASSERT_NE(dht, std::string::npos);
    auto before = bytes;
    before[dht + 5 + 15] = 0xFF;  // sixteen-bit codes of the first table
    EXPECT_FALSE(Jpeg_IsBaseline(before.data(), before.size()));
    EXPECT_EQ(ReadMemory(before), nullptr);

    // The same table placed after the scan, before the end marker.
    const std::vector<uint8_t> table(
        before.begin() + long(dht),
        before.begin() + long(dht) + 2 + (size_t(before[dht + 2]) << 8 | before[dht + 3]));
    auto after = bytes;
    after.insert(after.end() - 2, table.begin(), table.end());
    EXPECT_FALSE(Jpeg_IsBaseline(after.data(), after.size()));
    EXPECT_EQ(ReadMemory(after), nullptr);
    auto fine = bytes;
    const std::vector<uint8_t> goodTable(bytes.begin() + long(dht),
                                         bytes.begin() + long(dht) + long(table.size()));
    fine.insert(fine.end() - 2, goodTable.begin(), goodTable.end());
    EXPECT_TRUE(Jpeg_IsBaseline(fine.data(), fine.size()));
}

TEST(JpegRefused, NonJpegInput) {
    const std::vector<uint8_t> junk = {0xFF, 0xD8, 0xFF};
    EXPECT_EQ(ReadMemory(junk), nullptr);
    EXPECT_EQ(Jpeg_ReadMemory(nullptr, 0), nullptr);
    EXPECT_EQ(Jpeg_Read("/nonexistent/x.jpg"), nullptr);
    EXPECT_FALSE(Jpeg_IsBaseline(junk.data(), junk.size()));
}
