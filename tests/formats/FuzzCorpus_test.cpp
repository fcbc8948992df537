// Replays the fuzzers' corpora (seeds and every crasher they ever found)
// through the readers' memory entry points in the normal test run, so that
// each finding stays fixed in every build, the sanitizer build included.
#include "formats/Bmp_Read.h"
#include "formats/Fits_Read.h"
#include "formats/Jpeg_Read.h"
#include "formats/Png_Read.h"
#include "formats/Tiff_Read.h"
#include "image/Image.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

namespace fs = std::filesystem;

using MemoryReader = ImageBuffer* (*)(const uint8_t*, size_t);

// The same promises the fuzz targets trap on.
void ExpectSaneImage(const ImageBuffer* image) {
    ASSERT_GE(image->width, 1);
    ASSERT_GE(image->height, 1);
    EXPECT_EQ(image->stride, image->width);
    ASSERT_GE(image->bitDepth, 1);
    ASSERT_LE(image->bitDepth, 32);
    EXPECT_EQ(image->maxValue, int64_t((uint64_t{1} << image->bitDepth) - 1));
    ASSERT_TRUE(image->red && image->green && image->blue);
    EXPECT_EQ(image->attachment == nullptr, image->attachmentSize == 0);
    const size_t n = size_t(image->width) * size_t(image->height);
    for (const int64_t* plane : {image->red, image->green, image->blue, image->alpha}) {
        if (!plane) continue;
        for (size_t i = 0; i < n; ++i)
            if (plane[i] < 0 || plane[i] > image->maxValue) {
                ADD_FAILURE() << "sample " << i << " out of range: " << plane[i];
                return;
            }
    }
}

void Replay(const char* name, MemoryReader read) {
    const fs::path folder = fs::path(PELLUCIDA_TEST_SOURCE_DIR) / "fuzz" / "corpus" / name;
    if (!fs::is_directory(folder)) GTEST_SKIP() << "no corpus at " << folder.string();
    size_t files = 0;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (!entry.is_regular_file()) continue;
        SCOPED_TRACE(entry.path().filename().string());
        std::ifstream in(entry.path(), std::ios::binary);
        const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), {});
        ImagePtr image(read(bytes.data(), bytes.size()));
        if (image) ExpectSaneImage(image.get());
        ++files;
    }
    EXPECT_GT(files, 0u) << "empty corpus " << folder.string();
}

}  // namespace

TEST(FuzzCorpus, Tiff) {
    Replay("Tiff", &Tiff_ReadMemory);
}
TEST(FuzzCorpus, Bmp) {
    Replay("Bmp", &Bmp_ReadMemory);
}
TEST(FuzzCorpus, Png) {
    Replay("Png", &Png_ReadMemory);
}
TEST(FuzzCorpus, Jpeg) {
    Replay("Jpeg", &Jpeg_ReadMemory);
}
TEST(FuzzCorpus, Fits) {
    Replay("Fits", &Fits_ReadMemory);
}
