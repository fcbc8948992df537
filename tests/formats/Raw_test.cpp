// Raw-frame reader: recognition by exact file size only, the documented bit
// packing (MSB-first stream) at 10 and 12 bits, and the mono result, read from
// memory and from a file.
#include "formats/Raw_Read.h"
#include "image/Image.h"
#include "support/Files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <tuple>
#include <vector>

namespace {

// Packs samples MSB-first into the zeroed bytes at `out`, independently of
// the reader.
void Pack(const std::vector<int64_t>& samples, int bits, uint8_t* out) {
    size_t bit = 0;
    for (int64_t s : samples)
        for (int b = bits - 1; b >= 0; --b, ++bit)
            if (s >> b & 1) out[bit / 8] |= uint8_t(0x80 >> (bit % 8));
}

struct Frame {
    size_t size;
    int32_t width, height, bits;
};

// One frame of each depth: the reader's whole table of sizes is not repeated here.
const Frame kFrames[] = {{6553440, 2664, 1968, 10}, {15467760, 3720, 2772, 12}};

}  // namespace

TEST(RawFrames, AKnownSizeGivesItsFrameFromMemoryAndFromAFileAndAnyOtherSizeIsRefused) {
    TempDir dir;
    const std::string path = dir.File("frame.crw");
    for (const Frame& f : kFrames) {
        SCOPED_TRACE(f.size);
        // Row 0 starts 0, 1, 2, ... ; the last pixel is the largest value.
        const int64_t top = (int64_t{1} << f.bits) - 1;
        const std::vector<int64_t> head = {0, 1, 2, 3, top, 0x155, 0x2AA, 7};
        std::vector<uint8_t> bytes(f.size, 0);
        Pack(head, f.bits, bytes.data());
        // Rows follow each other without padding: row 1 starts right after row 0.
        Pack({top, 5, 6, 7}, f.bits, bytes.data() + size_t(f.width) * size_t(f.bits) / 8);
        // The last four samples end the file (both depths pack them into whole bytes).
        Pack({top, top, top, top}, f.bits, bytes.data() + f.size - size_t(4 * f.bits / 8));
        WriteFileBytes(path, bytes);
        const ImagePtr images[] = {ImagePtr(Raw_ReadMemory(bytes.data(), bytes.size())),
                                   ImagePtr(Raw_Read(path.c_str()))};
        const size_t end = size_t(f.width) * size_t(f.height) - 1;
        for (const ImagePtr& image : images) {
            ASSERT_NE(image, nullptr);
            EXPECT_EQ(std::tuple(image->width, image->height, image->bitDepth, image->maxValue, image->mono),
                      std::tuple(f.width, f.height, f.bits, top, 1));
            for (const int64_t* plane : {image->red, image->green, image->blue})
                EXPECT_EQ(std::vector<int64_t>(plane, plane + head.size()), head);
            EXPECT_EQ((std::vector<int64_t>{image->red[f.width - 1], image->red[f.width],
                                            image->red[f.width + 3], image->red[end]}),
                      (std::vector<int64_t>{0, top, 7, top}));
        }
    }
    // Any other size is refused, as is a file that is not there.
    std::vector<uint8_t> bytes(kFrames[0].size + 1, 0);
    WriteFileBytes(path, bytes);
    EXPECT_EQ(Raw_Read(path.c_str()), nullptr);
    std::filesystem::remove(path);
    EXPECT_EQ(Raw_Read(path.c_str()), nullptr);
    EXPECT_EQ(Raw_ReadMemory(bytes.data(), bytes.size()), nullptr);
    EXPECT_EQ(Raw_ReadMemory(bytes.data(), bytes.size() - 2), nullptr);
    EXPECT_EQ(Raw_ReadMemory(nullptr, kFrames[0].size), nullptr);
}
