// JPEG reader and writer: the marker scan on edited files (only baseline
// frames, application segments skipped by their length, Huffman tables that
// stb cannot hold), truncation, and the writer's quality and read-back.
#include "formats/Jpeg_Read.h"
#include "formats/Jpeg_Write.h"
#include "image/Image.h"
#include "support/Files.h"
#include "support/TestData.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

namespace {

constexpr auto ReadMemory = ReadBytes<&Jpeg_ReadMemory>;

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
std::vector<uint8_t> WrittenJpeg(int width, int height) {
    ImagePtr image = MakeImage(width, height, 8, [&](int32_t x, int32_t y, int c) {
        return c == 0 ? x * 255 / (width - 1) : c == 1 ? y * 255 / (height - 1) : 128;
    });
    TempDir dir;
    const std::string path = dir.File("w.jpg");
    EXPECT_EQ(Jpeg_Write(image.get(), path.c_str()), 1);
    return ReadFileBytes(path);
}

// Refused by the marker walk, and so by the reader.
void ExpectRefused(const std::vector<uint8_t>& bytes) {
    EXPECT_FALSE(Jpeg_IsBaseline(bytes.data(), bytes.size()));
    EXPECT_EQ(ReadMemory(bytes), nullptr);
}

}  // namespace

TEST(JpegMarkers, ProgressiveAndOtherFramesAreRefusedBeforeDecoding) {
    PELLUCIDA_REQUIRE_DATA(path, "jpeg/eso1723a_avm_320.jpg");
    const auto good = ReadFileBytes(path);
    ASSERT_NE(ReadMemory(good), nullptr);
    const size_t sof = FindMarker(good, 0xC0);
    ASSERT_NE(sof, std::string::npos);
    // Frames other than baseline; 0xFE makes the frame header a comment.
    for (uint8_t frame : {0xC1, 0xC2, 0xC3, 0xC9, 0xCA, 0xFE}) {
        auto edited = good;
        edited[sof + 1] = frame;
        SCOPED_TRACE(int(frame));
        ExpectRefused(edited);
    }
    auto noSoi = good;
    noSoi[1] = 0xD9;
    EXPECT_EQ(ReadMemory(noSoi), nullptr);
}

TEST(JpegFiles, EveryTruncationAndNonJpegInputIsHandledWithoutHarm) {
    const auto bytes = WrittenJpeg(24, 24);
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
    ExpectRefused({0xFF, 0xD8, 0xFF});
}

TEST(JpegFiles, WriterUsesQuality85AndReadsBackAndApplicationSegmentsAreSkippedByTheirLength) {
    auto bytes = WrittenJpeg(64, 48);
    // Quality 85 scales the standard luminance table by 30%: its first entry,
    // 16, becomes (16 x 30 + 50) / 100 = 5.
    const size_t dqt = FindMarker(bytes, 0xDB);
    ASSERT_NE(dqt, std::string::npos);
    EXPECT_EQ(bytes[dqt + 4] & 0x0F, 0) << "table 0 first";
    EXPECT_EQ(bytes[dqt + 5], 5);
    // An APP1 segment whose payload looks like a progressive frame header.
    const std::vector<uint8_t> app = {0xFF, 0xE1, 0x00, 0x08, 0xFF, 0xC2, 0x00, 0x11, 0xFF, 0xC2};
    bytes.insert(bytes.begin() + 2, app.begin(), app.end());
    EXPECT_TRUE(Jpeg_IsBaseline(bytes.data(), bytes.size()));
    ImagePtr image = ReadMemory(bytes);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(std::tuple(image->width, image->height, image->mono), std::tuple(64, 48, 0));
    // A smooth ramp survives within a few levels.
    for (auto [sample, expected] : {std::pair{image->red[0], 0},
                                    {image->red[63], 255},
                                    {image->green[47 * 64], 255},
                                    {image->blue[30 * 64 + 30], 128}})
        EXPECT_NEAR(double(sample), double(expected), 4.0);
}

TEST(JpegFiles, HuffmanTablesWithMoreThan256CodesAreRefused) {
    // stb writes past its tables on such a file (found by fuzzing), so the
    // marker walk must stop it, before the scan and between scans alike.
    auto bytes = WrittenJpeg(16, 16);
    const size_t dht = FindMarker(bytes, 0xC4);
    ASSERT_NE(dht, std::string::npos);
    auto before = bytes;
    before[dht + 5 + 15] = 0xFF;  // sixteen-bit codes of the first table
    ExpectRefused(before);

    // The same table placed after the scan, before the end marker; the
    // table as written is accepted there.
    auto tableAtEnd = [&](const std::vector<uint8_t>& from) {
        const auto table = from.begin() + long(dht);
        auto out = bytes;
        out.insert(out.end() - 2, table, table + 2 + long(size_t(table[2]) << 8 | table[3]));
        return out;
    };
    ExpectRefused(tableAtEnd(before));
    const auto fine = tableAtEnd(bytes);
    EXPECT_TRUE(Jpeg_IsBaseline(fine.data(), fine.size()));
}
