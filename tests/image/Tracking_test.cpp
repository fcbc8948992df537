// The tracking store: round trips, the block layout on disk (parsed here,
// independently of the reader), link records, the user's messages, files that
// are missing, unwritable, truncated or damaged, and the fuzz corpus replayed.
#include "image/Tracking.h"
#include "image/Tracking_Internal.h"

#include "fuzz/FuzzTracking.h"
#include "host/Host.h"
#include "host/headless/Headless.h"
#include "image/ImageFixtures.h"
#include "support/Files.h"
#include "support/FuzzReplay.h"
#include "support/LittleEndian.h"
#include "support/TestImages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <lz4.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr const char* kCouldNotCreate =
    "Could not create Tracking data. Please make sure Pellucida has read/write permission for the folder "
    "you are running the application from.";
constexpr const char* kCouldNotModify =
    "Could not modify Tracking data. Please make sure Pellucida has read/write permission for the folder "
    "you are running the application from.";
constexpr const char* kSwapError =
    "Error while swapping tracking information to disk. Tracking information has likely been corrupted. Use "
    "the Undo button to recover previous tracking information. Free disk space on the drive you are running "
    "Pellucida from and try again.";

constexpr size_t kBlock = 8388608;  // 8 MiB: the largest block of a plane
using V = std::vector<int64_t>;

// Noisy 30-bit content that LZ4 cannot squeeze much, like real sky: a
// gradient plus 20 bits of noise.
ImagePtr Noisy(int32_t width, int32_t height, uint32_t seed) {
    return MakeImage(width, height, 30, [=](int32_t x, int32_t y, int c) {
        const int64_t i = int64_t{y} * width + x;
        return i * 997 % 700000000 +
               int64_t(TestHash(uint64_t(i) * 3 + uint64_t(c) + (uint64_t(seed) << 40)) >> 44);
    });
}

// A noisy image written to slot a, b as a plain record.
ImagePtr WrittenNoisy(int a, int b, int32_t width, int32_t height, uint32_t seed) {
    ImagePtr image = Noisy(width, height, seed);
    EXPECT_TRUE(Tracking_WriteSlot(a, b, image.get(), false)) << "slot " << a << ", " << b;
    return image;
}

// Words of the file are little-endian, as the planes are.
uint32_t Word(const Bytes& bytes, size_t at) {
    return LittleEndian_Get(bytes, at, 4);
}

// The slot reads back with exactly the planes of `image`.
void ExpectSlotHolds(int a, int b, const ImageBuffer& image, bool compose = false) {
    ImagePtr back(Tracking_ReadSlot(a, b, compose));
    ASSERT_TRUE(back) << "slot " << a << ", " << b;
    EXPECT_TRUE(SameImage(*back, image)) << "slot " << a << ", " << b;
}

// Parses a full record the way the layout describes it, block by block, with
// no help from the reader: each block is decompressed on its own.
std::vector<Bytes> ParseRecord(const Bytes& bytes, size_t blocksExpected) {
    std::vector<Bytes> blocks;
    size_t at = 16;
    while (at + 4 <= bytes.size() && blocks.size() < blocksExpected) {
        const uint32_t length = Word(bytes, at);
        at += 4;
        if (at + length > bytes.size()) break;
        Bytes block(kBlock);
        const int n = LZ4_decompress_safe(reinterpret_cast<const char*>(bytes.data() + at),
                                          reinterpret_cast<char*>(block.data()), int(length), int(kBlock));
        block.resize(n < 0 ? 0 : size_t(n));
        at += length;
        blocks.push_back(std::move(block));
    }
    EXPECT_EQ(at, bytes.size()) << "the file must end with the last block";
    return blocks;
}

class TrackingStore : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(Host_SelectBackend("headless"));
        SetEnv("PELLUCIDA_STATE_DIR", dir_.Path().string());
        Headless_TakeMessages();
    }
    void TearDown() override {
        UnsetEnv("PELLUCIDA_STATE_DIR");
        UnsetEnv("PELLUCIDA_WORKERS");
    }

    fs::path Slot(int a, int b) const { return fs::path(Tracking_SlotPath(a, b)); }

    // The one message shown since the last call, or "" when none was.
    std::string TakeOnlyMessage() {
        std::vector<std::string> messages = Headless_TakeMessages();
        EXPECT_LE(messages.size(), 1u);
        return messages.empty() ? std::string() : messages.back();
    }

    TempDir dir_;
};

TEST_F(TrackingStore, SlotFilesAreNamedByTheirTwoNumbersInTheDataFolder) {
    EXPECT_EQ(Slot(1, 2), dir_.Path() / "QV12.trk");
    EXPECT_EQ(Slot(0, 9), dir_.Path() / "QV09.trk");
    EXPECT_EQ(Slot(10, 3).filename().string(), "QV:3.trk");  // no guard: 10 is the character after '9'

    ImagePtr image = WrittenNoisy(0, 1, 5, 4, 1);
    EXPECT_EQ(dir_.Count(), 1u) << "nothing left pending";
    EXPECT_TRUE(fs::exists(Slot(0, 1)));
}

TEST_F(TrackingStore, ComposeStoresLuminanceAndColourDifferences) {
    const int64_t top = (int64_t{1} << 30) - 1;
    const int64_t rgb[5][3] = {{7, 11, 13}, {100, 0, 0}, {0, 999, 0}, {0, 0, 999}, {top, top, top}};
    ImagePtr image = MakeImage(5, 1, 30, [&](int32_t x, int32_t, int c) { return rgb[x][c]; });
    ASSERT_TRUE(Tracking_WriteSlot(2, 0, image.get(), true));

    // Stored as they lie: Y = trunc(0.299 R + 0.587 G + 0.114 B), B - Y, R - Y.
    // One pixel per weight, each far from an integer Y (10.032, 29.9, 586.413,
    // 113.886). Read from the file itself: the reader holds a plain record's
    // samples to 0..maxValue.
    const std::vector<Bytes> blocks = ParseRecord(ReadFileBytes(Tracking_SlotPath(2, 0)), 3);
    ASSERT_EQ(blocks.size(), 3u);
    auto stored = [&](int plane) {
        V v(4);
        std::memcpy(v.data(), blocks[plane].data(), 4 * 8);
        return v;
    };
    EXPECT_EQ(stored(0), (V{10, 29, 586, 113}));
    EXPECT_EQ(stored(1), (V{3, -29, -586, 886}));
    EXPECT_EQ(stored(2), (V{-3, 71, -586, -113}));
    ImagePtr plain(Tracking_ReadSlot(2, 0, false));
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->green[2], 0);  // -586 held to the range

    // Converted back in place: R and B exact, G from the truncated Y
    // (6.425 / 0.587 = 10.9 -> 10; 586 / 0.587 = 998.3; -1.5 for the second
    // and fourth pixels before the clamp), everything clamped to 0..maxValue.
    EXPECT_EQ(V(image->red, image->red + 4), (V{7, 100, 0, 0}));
    EXPECT_EQ(V(image->green, image->green + 4), (V{10, 0, 998, 0}));
    EXPECT_EQ(V(image->blue, image->blue + 4), (V{13, 0, 0, 999}));
    for (int64_t* plane : {image->red, image->green, image->blue})
        EXPECT_THAT(plane[4], testing::AllOf(testing::Ge(top - 2), testing::Le(top)));

    // Reading with compose gives what the write left in the image.
    ExpectSlotHolds(2, 0, *image, true);
}

TEST_F(TrackingStore, RoundTripIsExactAndPlanesSplitIntoBlocksOfEightMebibytesWhateverTheWorkers) {
    const struct {
        int32_t width, height;
        uint16_t depth;
        std::vector<size_t> blocks;  // decompressed sizes of one plane's blocks
    } cases[] = {
        {37, 23, 16, {37 * 23 * 8}},   // the record's depth sets the maximum
        {1024, 1024, 30, {kBlock}},    // exactly 8 MiB a plane: one block
        {61681, 17, 30, {kBlock, 8}},  // one sample more: a second block of one sample
        {2000, 1500, 30, {kBlock, kBlock, 24000000 - 2 * kBlock}},
    };
    uint32_t seed = 3;
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.width << " x " << c.height);
        ImagePtr image = Noisy(c.width, c.height, seed++);
        if (c.depth == 16) Image_SetBitDepth(image.get(), 16);
        ImagePtr before(Image_Clone(image.get()));
        // One worker, and more workers than blocks of a plane but fewer than of the file.
        SetEnv("PELLUCIDA_WORKERS", "1");
        ASSERT_TRUE(Tracking_WriteSlot(1, 0, image.get(), false));
        SetEnv("PELLUCIDA_WORKERS", "5");
        ASSERT_TRUE(Tracking_WriteSlot(2, 0, image.get(), false));
        EXPECT_TRUE(SameImage(*image, *before)) << "writing without compose must not touch the image";
        const Bytes bytes = ReadFileBytes(Slot(2, 0));
        EXPECT_EQ(ReadFileBytes(Slot(1, 0)), bytes);
        ASSERT_GE(bytes.size(), 16u);
        EXPECT_EQ((std::vector<uint32_t>{Word(bytes, 0), Word(bytes, 4), Word(bytes, 8), Word(bytes, 12)}),
                  (std::vector<uint32_t>{0, uint32_t(c.width), uint32_t(c.height), c.depth}));

        const std::vector<Bytes> blocks = ParseRecord(bytes, 3 * c.blocks.size() + 1);
        ASSERT_EQ(blocks.size(), 3 * c.blocks.size());
        const int64_t* planes[3] = {image->red, image->green, image->blue};
        for (size_t b = 0; b < blocks.size(); ++b) {
            const size_t k = b % c.blocks.size();
            const auto* plane = reinterpret_cast<const uint8_t*>(planes[b / c.blocks.size()]);
            ASSERT_EQ(blocks[b].size(), c.blocks[k]) << "block " << b;
            EXPECT_EQ(std::memcmp(blocks[b].data(), plane + k * kBlock, c.blocks[k]), 0) << "block " << b;
        }
        ImagePtr back(Tracking_ReadSlot(2, 0, false));
        ASSERT_TRUE(back);
        EXPECT_EQ(
            (std::vector<int64_t>{back->width, back->stride, back->height, back->bitDepth, back->maxValue}),
            (std::vector<int64_t>{c.width, c.width, c.height, c.depth, (int64_t{1} << c.depth) - 1}));
        EXPECT_EQ(back->alpha, nullptr);
        EXPECT_TRUE(SameImage(*back, *image));
    }
    EXPECT_EQ(TakeOnlyMessage(), "");
}

TEST_F(TrackingStore, ReplacedRecordIsReusedForTheNextWriteAndCutToSize) {
    ImagePtr large = WrittenNoisy(0, 1, 700, 500, 16);
    const Bytes first = ReadFileBytes(Slot(0, 1));
    ImagePtr other = WrittenNoisy(0, 1, 700, 500, 18);
    EXPECT_EQ(ReadFileBytes(Tracking_SparePath()), first) << "the replaced record becomes the spare";

    // The spare is larger than the next record: what lands in the slot is
    // exactly the new record, nothing of the old one behind it.
    ImagePtr small = WrittenNoisy(0, 2, 30, 20, 17);
    EXPECT_EQ(ParseRecord(ReadFileBytes(Slot(0, 2)), 4).size(), 3u);
    ExpectSlotHolds(0, 2, *small);
    ExpectSlotHolds(0, 1, *other);
    EXPECT_EQ(TakeOnlyMessage(), "");
}

TEST_F(TrackingStore, LinkRecordsNameTheSlotToReadAndLoopsAndMissingSlotsEndInNull) {
    ImagePtr three = WrittenNoisy(3, 2, 9, 7, 7);
    ImagePtr one = WrittenNoisy(1, 3, 9, 7, 8);  // same first number, other second
    ASSERT_TRUE(Tracking_WriteLink(1, 2, 3));
    EXPECT_EQ(ReadFileBytes(Slot(1, 2)), (Bytes{3, 0, 0, 0}));
    EXPECT_EQ(Tracking_ReadLink(1, 2), 3u);
    ExpectSlotHolds(1, 2, *three);

    // A full record written over the link replaces it; 0 would read as a full
    // record and cannot be named.
    ASSERT_TRUE(Tracking_WriteSlot(1, 2, three.get(), false));
    EXPECT_EQ(Tracking_ReadLink(1, 2), 0u);
    EXPECT_FALSE(Tracking_WriteLink(1, 2, 0));
    EXPECT_EQ(Tracking_ReadLink(1, 2), 0u);
    EXPECT_EQ(TakeOnlyMessage(), "");

    // Missing, empty and short files link nowhere; the first word is little-endian.
    EXPECT_EQ(Tracking_ReadLink(6, 6), 0u);
    for (const Bytes& bytes : {Bytes{}, Bytes{9, 9}, Bytes{0x04, 0x03, 0x02, 0x01}}) {
        WriteFileBytes(Slot(6, 7), bytes);
        EXPECT_EQ(Tracking_ReadLink(6, 7), bytes.size() == 4 ? 0x01020304u : 0u) << bytes.size() << " bytes";
    }

    WriteFileBytes(Slot(1, 0), {2, 0, 0, 0});
    WriteFileBytes(Slot(2, 0), {1, 0, 0, 0});
    EXPECT_EQ(Tracking_ReadSlot(1, 0, false), nullptr);
    WriteFileBytes(Slot(4, 0), {4, 0, 0, 0});
    EXPECT_EQ(Tracking_ReadSlot(4, 0, false), nullptr);

    // A missing slot reads as nothing and says so on the console; a link to
    // it says the same.
    WriteFileBytes(Slot(1, 8), {8, 0, 0, 0});
    for (int a : {8, 1}) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(Tracking_ReadSlot(a, 8, false), nullptr);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "Can't open tracking file!");
    }
    EXPECT_EQ(TakeOnlyMessage(), "") << "the console, not a message box";
}

TEST_F(TrackingStore, SlotThatCannotBeWrittenShowsWhyAndTheProgramGoesOn) {
    // A folder below a plain file can never be created, whoever runs the test;
    // a folder where the slot file should be can never be replaced by one.
    WriteFileBytes(dir_.Path() / "plain", {1});
    fs::create_directories(Slot(0, 1));
    const struct {
        fs::path stateDir;
        const char* message;
        bool compose;
    } cases[] = {{dir_.Path() / "plain" / "state", kCouldNotCreate, true},
                 {dir_.Path(), kCouldNotModify, false}};
    ImagePtr image = Noisy(6, 5, 11);
    ImagePtr before(Image_Clone(image.get()));
    for (const auto& c : cases) {
        SCOPED_TRACE(c.message);
        SetEnv("PELLUCIDA_STATE_DIR", c.stateDir.string());
        EXPECT_FALSE(Tracking_WriteSlot(0, 1, image.get(), c.compose));
        EXPECT_THAT(TakeOnlyMessage(), testing::EndsWith(c.message));
        EXPECT_TRUE(SameImage(*image, *before)) << "nothing converted when nothing could be written";
        EXPECT_FALSE(Tracking_WriteLink(0, 1, 2));
        EXPECT_THAT(TakeOnlyMessage(), testing::EndsWith(c.message));
    }
    EXPECT_TRUE(fs::is_directory(Slot(0, 1)));

    // Still running, and other slots still work.
    ASSERT_TRUE(Tracking_WriteSlot(0, 2, image.get(), false));
    ExpectSlotHolds(0, 2, *image);
}

TEST_F(TrackingStore, FailedWriteShowsTheSwapErrorAndKeepsTheEarlierState) {
#ifndef __linux__
    GTEST_SKIP() << "needs /dev/full to make a write fail half way";
#else
    if (!fs::exists("/dev/full")) GTEST_SKIP() << "needs /dev/full to make a write fail half way";
    ImagePtr earlier = WrittenNoisy(0, 1, 300, 200, 13);
    const Bytes earlierBytes = ReadFileBytes(Slot(0, 1));

    // The new contents land on a device that is always full.
    fs::remove(Tracking_SparePath());
    fs::create_symlink("/dev/full", Tracking_SparePath());
    ImagePtr later = Noisy(300, 200, 14);
    ImagePtr laterBefore(Image_Clone(later.get()));
    EXPECT_FALSE(Tracking_WriteSlot(0, 1, later.get(), true));
    EXPECT_THAT(TakeOnlyMessage(), testing::EndsWith(kSwapError));
    EXPECT_EQ(ReadFileBytes(Slot(0, 1)), earlierBytes) << "the earlier state must survive";

    // The image was converted back even though the write failed.
    const size_t n = size_t{300} * 200;
    EXPECT_TRUE(std::equal(later->red, later->red + n, laterBefore->red));
    EXPECT_TRUE(std::equal(later->blue, later->blue + n, laterBefore->blue));
    for (size_t i = 0; i < n; ++i) ASSERT_LE(laterBefore->green[i] - later->green[i], 2);
#endif
}

// The slot reader's fuzz corpus (every crasher the fuzzer ever found is kept
// there), through the fuzz target's own step.
TEST_F(TrackingStore, EveryKeptFuzzInputIsReadOrRefusedSafely) {
    Fuzz_Replay("TrackingSlot",
                [](const Bytes& bytes, const fs::path&) { Fuzz_TrackingSlot(bytes.data(), bytes.size()); });
}

// One good record of two blocks a plane, damaged every way: cut short or with
// an impossible header it is refused; with a block that cannot be
// decompressed it says "Error" and reading goes on.
TEST_F(TrackingStore, DamagedSlotsAreRefusedAndASpoiltBlockIsZeroedWhileReadingGoesOn) {
    ImagePtr image = WrittenNoisy(2, 2, 1100, 1000, 15);
    const Bytes good = ReadFileBytes(Slot(2, 2));
    std::string console;
    auto readWith = [&](const Bytes& bytes) {
        WriteFileBytes(Slot(2, 2), bytes);
        testing::internal::CaptureStdout();
        ImagePtr read(Tracking_ReadSlot(2, 2, false));
        console = testing::internal::GetCapturedStdout();
        return read;
    };

    // Empty, headerless (a first word of 0 and nothing after it) and cut short.
    const size_t cuts[] = {0, 2, 4, 5, 8, 15, 16, 17, 19, 20, 1000, good.size() / 2, good.size() - 1};
    for (size_t cut : cuts)
        EXPECT_EQ(readWith(Bytes(good.begin(), good.begin() + std::ptrdiff_t(cut))), nullptr)
            << "cut at " << cut;
    const std::vector<std::pair<size_t, uint32_t>> edits[] = {
        {{4, 0x7FFFFFFF}, {8, 0x7FFFFFFF}},  // more than the file can hold
        {{8, 1000 * 1000}},                  // a thousand times the rows: beyond any LZ4 ratio
        {{4, 0}},
        {{4, 0x80000000u}},  // no signed 32-bit width
        {{12, 0}},
        {{12, 64}},
        {{16, 16777217}},  // a block longer than the input buffer
    };
    for (const auto& edit : edits) {
        Bytes bytes = good;
        for (const auto& [at, word] : edit) std::memcpy(&bytes[at], &word, 4);
        EXPECT_EQ(readWith(bytes), nullptr) << "word at " << edit[0].first << " = " << edit[0].second;
    }
    ImagePtr whole = readWith(good);
    ASSERT_TRUE(whole);
    EXPECT_TRUE(SameImage(*whole, *image));
    // Its planes go back to the store, so that the next read gets planes full
    // of samples and the spoilt block's range is not zero by chance.
    whole.reset();

    // The red plane's first block spoilt: it cannot decompress to 8 MiB.
    Bytes spoilt = good;
    std::memset(spoilt.data() + 20, 0xFF, 64);
    ImagePtr back = readWith(spoilt);
    ASSERT_TRUE(back);
    EXPECT_EQ(console, "Error");
    // The spoilt block's range is zero, everything after it intact.
    const size_t blockSamples = kBlock / 8;
    for (size_t i = 0; i < blockSamples; i += 4099) ASSERT_EQ(back->red[i], 0) << i;
    const size_t n = size_t{1100} * 1000;
    EXPECT_EQ(std::memcmp(back->red + blockSamples, image->red + blockSamples, (n - blockSamples) * 8), 0);
    EXPECT_EQ(std::memcmp(back->green, image->green, n * 8), 0);
    EXPECT_EQ(std::memcmp(back->blue, image->blue, n * 8), 0);
}

}  // namespace
