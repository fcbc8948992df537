// The tracking store: round trips, the block layout on disk (parsed here,
// independently of the reader), link records, the user's messages, and files
// that are missing, unwritable, truncated or damaged.
#include "image/Tracking.h"
#include "image/Tracking_Internal.h"

#include "host/Host.h"
#include "host/Host_Threads.h"
#include "host/headless/Headless.h"
#include "support/TestData.h"

#include <gtest/gtest.h>
#include <lodepng.h>
#include <lz4.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
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

void SetEnv(const char* name, const std::string& value) {
#ifdef _WIN32
    _putenv_s(name, value.c_str());
#else
    setenv(name, value.c_str(), 1);
#endif
}

void UnsetEnv(const char* name) {
#ifdef _WIN32
    _putenv_s(name, "");
#else
    unsetenv(name);
#endif
}

// Noisy 30-bit content that LZ4 cannot squeeze much, like real sky.
ImagePtr MakeImage(int32_t width, int32_t height, uint32_t seed) {
    ImagePtr image(Image_Create(width, height));
    image->bitDepth = 30;
    image->maxValue = (int64_t{1} << 30) - 1;
    uint64_t state = 0x9E3779B97F4A7C15ull * (seed + 1);
    int64_t* planes[3] = {image->red, image->green, image->blue};
    for (int64_t* plane : planes) {
        for (int64_t i = 0; i < int64_t{width} * height; ++i) {
            state = state * 6364136223846793005ull + 1442695040888963407ull;
            // A gradient plus low-bit noise.
            plane[i] = (i * 997 % 700000000) + static_cast<int64_t>(state >> 44);
        }
    }
    return image;
}

std::vector<uint8_t> ReadBytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

void WriteBytes(const fs::path& path, const std::vector<uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

uint32_t Word(const std::vector<uint8_t>& bytes, size_t at) {
    return uint32_t{bytes[at]} | uint32_t{bytes[at + 1]} << 8 | uint32_t{bytes[at + 2]} << 16 |
           uint32_t{bytes[at + 3]} << 24;
}

void PutWord(std::vector<uint8_t>& bytes, size_t at, uint32_t value) {
    for (int k = 0; k < 4; ++k) bytes[at + k] = static_cast<uint8_t>(value >> (8 * k));
}

bool PlanesEqual(const ImageBuffer& a, const ImageBuffer& b) {
    const size_t n = static_cast<size_t>(a.stride) * a.height * sizeof(int64_t);
    return std::memcmp(a.red, b.red, n) == 0 && std::memcmp(a.green, b.green, n) == 0 &&
           std::memcmp(a.blue, b.blue, n) == 0;
}

// A real 16-bit RGB picture, brought to the working 30 bits as the load flow
// does (new low bits filled with ones).
ImagePtr LoadPng16AsWorkingImage(const std::string& path) {
    std::vector<unsigned char> pixels;
    unsigned width = 0, height = 0;
    if (lodepng::decode(pixels, width, height, path, LCT_RGB, 16) != 0) return nullptr;
    ImagePtr image(Image_Create(static_cast<int32_t>(width), static_cast<int32_t>(height)));
    image->bitDepth = 30;
    image->maxValue = (int64_t{1} << 30) - 1;
    int64_t* planes[3] = {image->red, image->green, image->blue};
    for (size_t i = 0; i < size_t{width} * height; ++i) {
        for (int c = 0; c < 3; ++c) {
            const int64_t v = pixels[(i * 3 + c) * 2] << 8 | pixels[(i * 3 + c) * 2 + 1];
            planes[c][i] = v << 14 | 0x3FFF;
        }
    }
    return image;
}

class TrackingStore : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(Host_SelectBackend("headless"));
        const testing::TestInfo* info = testing::UnitTest::GetInstance()->current_test_info();
        dir_ = fs::temp_directory_path() / (std::string("pellucida-tracking-") + info->name());
        fs::remove_all(dir_);
        fs::create_directories(dir_);
        SetEnv("PELLUCIDA_STATE_DIR", dir_.string());
        Headless_TakeMessages();
    }
    void TearDown() override {
        UnsetEnv("PELLUCIDA_STATE_DIR");
        UnsetEnv("PELLUCIDA_WORKERS");
        std::error_code ec;
        fs::remove_all(dir_, ec);
    }

    fs::path Slot(int a, int b) const { return fs::path(Tracking_SlotPath(a, b)); }

    // The one message shown since the last call, or "" when none was.
    std::string TakeOnlyMessage() {
        std::vector<std::string> messages = Headless_TakeMessages();
        EXPECT_LE(messages.size(), 1u);
        return messages.empty() ? std::string() : messages.back();
    }

    fs::path dir_;
};

bool EndsWith(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

// --- Naming ---------------------------------------------------------------

TEST_F(TrackingStore, SlotFilesAreNamedByTheirTwoNumbersInTheDataFolder) {
    EXPECT_EQ(Slot(1, 2), dir_ / "QV12.trk");
    EXPECT_EQ(Slot(0, 9), dir_ / "QV09.trk");
    // No guard: 10 is the character after '9'.
    EXPECT_EQ(Slot(10, 3).filename().string(), "QV:3.trk");

    ImagePtr image = MakeImage(5, 4, 1);
    ASSERT_TRUE(Tracking_WriteSlot(0, 1, image.get(), false));
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(dir_)) {
        names.push_back(entry.path().filename().string());
    }
    EXPECT_EQ(names, std::vector<std::string>{"QV01.trk"});  // and nothing left pending
}

// --- Round trips ----------------------------------------------------------

TEST_F(TrackingStore, RoundTripWithoutComposeIsExact) {
    ImagePtr image = MakeImage(37, 23, 2);
    image->bitDepth = 30;
    ImagePtr before(Image_Clone(image.get()));
    ASSERT_TRUE(Tracking_WriteSlot(4, 5, image.get(), false));
    EXPECT_TRUE(PlanesEqual(*image, *before)) << "writing without compose must not touch the image";

    ImagePtr back(Tracking_ReadSlot(4, 5, false));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->width, 37);
    EXPECT_EQ(back->stride, 37);
    EXPECT_EQ(back->height, 23);
    EXPECT_EQ(back->bitDepth, 30);
    EXPECT_EQ(back->maxValue, 1073741823);
    EXPECT_EQ(back->alpha, nullptr);
    EXPECT_TRUE(PlanesEqual(*back, *before));
    EXPECT_EQ(TakeOnlyMessage(), "");
}

TEST_F(TrackingStore, BitDepthOfTheRecordSetsTheMaximum) {
    ImagePtr image = MakeImage(3, 2, 3);
    for (int64_t* plane : {image->red, image->green, image->blue}) {
        for (int i = 0; i < 6; ++i) plane[i] &= 0xFFFF;
    }
    image->bitDepth = 16;
    image->maxValue = 65535;
    ASSERT_TRUE(Tracking_WriteSlot(0, 0, image.get(), false));
    ImagePtr back(Tracking_ReadSlot(0, 0, false));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->bitDepth, 16);
    EXPECT_EQ(back->maxValue, 65535);
    EXPECT_TRUE(PlanesEqual(*back, *image));
}

// --- Layout on disk -------------------------------------------------------

struct ParsedBlock {
    uint32_t length;
    std::vector<uint8_t> data;  // decompressed
};

// Parses a full record the way the layout describes it, block by block, with
// no help from the reader: each block is decompressed on its own.
std::vector<ParsedBlock> ParseRecord(const std::vector<uint8_t>& bytes, uint32_t blocksExpected) {
    std::vector<ParsedBlock> blocks;
    size_t at = 16;
    while (at + 4 <= bytes.size() && blocks.size() < blocksExpected) {
        ParsedBlock block;
        block.length = Word(bytes, at);
        at += 4;
        if (at + block.length > bytes.size()) break;
        block.data.resize(8388608);
        const int n = LZ4_decompress_safe(reinterpret_cast<const char*>(bytes.data() + at),
                                          reinterpret_cast<char*>(block.data.data()),
                                          static_cast<int>(block.length), 8388608);
        block.data.resize(n < 0 ? 0 : static_cast<size_t>(n));
        at += block.length;
        blocks.push_back(std::move(block));
    }
    EXPECT_EQ(at, bytes.size()) << "the file must end with the last block";
    return blocks;
}

TEST_F(TrackingStore, ComposeStoresLuminanceAndColourDifferences) {
    ImagePtr image(Image_Create(5, 1));
    image->bitDepth = 30;
    image->maxValue = 1073741823;
    const int64_t rgb[5][3] = {
        {7, 11, 13}, {100, 0, 0}, {0, 999, 0}, {0, 0, 999}, {1073741823, 1073741823, 1073741823}};
    for (int i = 0; i < 5; ++i) {
        image->red[i] = rgb[i][0];
        image->green[i] = rgb[i][1];
        image->blue[i] = rgb[i][2];
    }
    ASSERT_TRUE(Tracking_WriteSlot(2, 0, image.get(), true));

    // Stored as they lie: Y = trunc(0.299 R + 0.587 G + 0.114 B), B - Y, R - Y.
    // One pixel per weight, each far from an integer Y. Read from the file
    // itself: the reader holds a plain record's samples to 0..maxValue.
    std::vector<ParsedBlock> blocks = ParseRecord(ReadBytes(Tracking_SlotPath(2, 0)), 3);
    ASSERT_EQ(blocks.size(), 3u);
    auto sample = [&](int plane, int i) {
        int64_t v;
        std::memcpy(&v, blocks[plane].data.data() + i * 8, 8);
        return v;
    };
    const int64_t expected[4][3] = {{10, 3, -3},        // 10.032
                                    {29, -29, 71},      // 29.9
                                    {586, -586, -586},  // 586.413
                                    {113, 886, -113}};  // 113.886
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(sample(0, i), expected[i][0]) << "pixel " << i;
        EXPECT_EQ(sample(1, i), expected[i][1]) << "pixel " << i;
        EXPECT_EQ(sample(2, i), expected[i][2]) << "pixel " << i;
    }
    ImagePtr plain(Tracking_ReadSlot(2, 0, false));
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->green[2], 0);  // -586 held to the range

    // Converted back in place: R and B exact, G from the truncated Y
    // (6.425 / 0.587 = 10.9 -> 10), everything clamped to 0..maxValue.
    const int64_t restored[4][3] = {{7, 10, 13},
                                    {100, 0, 0},   // G -1.5 before the clamp
                                    {0, 998, 0},   // 586 / 0.587 = 998.3
                                    {0, 0, 999}};  // G -1.5 before the clamp
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(image->red[i], restored[i][0]) << "pixel " << i;
        EXPECT_EQ(image->green[i], restored[i][1]) << "pixel " << i;
        EXPECT_EQ(image->blue[i], restored[i][2]) << "pixel " << i;
    }
    for (int64_t* plane : {image->red, image->green, image->blue}) {
        EXPECT_GE(plane[4], 1073741823 - 2);
        EXPECT_LE(plane[4], 1073741823);
    }

    // Reading with compose gives what the write left in the image.
    ImagePtr back(Tracking_ReadSlot(2, 0, true));
    ASSERT_TRUE(back);
    EXPECT_TRUE(PlanesEqual(*back, *image));
}

TEST_F(TrackingStore, ComposeRoundTripOfRealPictureIsWithinTheRoundingOfY) {
    PELLUCIDA_REQUIRE_DATA(path, "png/libvips_sample_rgb16.png");
    ImagePtr image = LoadPng16AsWorkingImage(path);
    ASSERT_TRUE(image);
    ASSERT_EQ(image->width, 290);
    ASSERT_EQ(image->height, 442);
    ImagePtr original(Image_Clone(image.get()));

    ASSERT_TRUE(Tracking_WriteSlot(1, 1, image.get(), true));
    ImagePtr back(Tracking_ReadSlot(1, 1, true));
    ASSERT_TRUE(back);
    EXPECT_TRUE(PlanesEqual(*back, *image));

    const size_t n = size_t{290} * 442;
    size_t greenChanged = 0;
    for (size_t i = 0; i < n; ++i) {
        ASSERT_EQ(back->red[i], original->red[i]) << "at " << i;
        ASSERT_EQ(back->blue[i], original->blue[i]) << "at " << i;
        // Y lost less than 1 to truncation, which G feels divided by 0.587,
        // and G is truncated again.
        ASSERT_LE(back->green[i], original->green[i]) << "at " << i;
        ASSERT_GE(back->green[i], original->green[i] - 2) << "at " << i;
        greenChanged += back->green[i] != original->green[i];
    }
    EXPECT_GT(greenChanged, 0u) << "the truncation of Y should show somewhere in a real picture";
}

TEST_F(TrackingStore, RoundTripOfRealPictureWithoutComposeIsExact) {
    PELLUCIDA_REQUIRE_DATA(path, "png/libvips_sample_rgb16.png");
    ImagePtr image = LoadPng16AsWorkingImage(path);
    ASSERT_TRUE(image);
    ASSERT_TRUE(Tracking_WriteSlot(7, 3, image.get(), false));
    ImagePtr back(Tracking_ReadSlot(7, 3, false));
    ASSERT_TRUE(back);
    EXPECT_TRUE(PlanesEqual(*back, *image));
    // Real 16-bit content in 30-bit samples compresses well below 8 bytes a sample.
    EXPECT_LT(fs::file_size(Slot(7, 3)), size_t{290} * 442 * 24 * 3 / 4);
}

TEST_F(TrackingStore, PlaneOfExactlyEightMebibytesIsOneBlock) {
    ImagePtr image = MakeImage(1024, 1024, 4);  // 1024 x 1024 x 8 = 8388608
    ASSERT_TRUE(Tracking_WriteSlot(1, 0, image.get(), false));
    const std::vector<uint8_t> bytes = ReadBytes(Slot(1, 0));
    ASSERT_GE(bytes.size(), 16u);
    EXPECT_EQ(Word(bytes, 0), 0u);
    EXPECT_EQ(Word(bytes, 4), 1024u);
    EXPECT_EQ(Word(bytes, 8), 1024u);
    EXPECT_EQ(Word(bytes, 12), 30u);

    const std::vector<ParsedBlock> blocks = ParseRecord(bytes, 4);
    ASSERT_EQ(blocks.size(), 3u);
    const int64_t* planes[3] = {image->red, image->green, image->blue};
    for (int p = 0; p < 3; ++p) {
        ASSERT_EQ(blocks[p].data.size(), 8388608u) << "plane " << p;
        EXPECT_EQ(std::memcmp(blocks[p].data.data(), planes[p], 8388608), 0) << "plane " << p;
    }
}

TEST_F(TrackingStore, OneSampleMoreThanEightMebibytesMakesTwoBlocksAPlane) {
    SetEnv("PELLUCIDA_WORKERS", "4");          // more workers than blocks of a plane, fewer than of the file
    ImagePtr image = MakeImage(61681, 17, 5);  // 1048577 samples
    ASSERT_TRUE(Tracking_WriteSlot(1, 0, image.get(), false));
    const std::vector<uint8_t> bytes = ReadBytes(Slot(1, 0));
    ASSERT_GE(bytes.size(), 16u);
    EXPECT_EQ(Word(bytes, 4), 61681u);
    EXPECT_EQ(Word(bytes, 8), 17u);

    const std::vector<ParsedBlock> blocks = ParseRecord(bytes, 7);
    ASSERT_EQ(blocks.size(), 6u);
    const int64_t* planes[3] = {image->red, image->green, image->blue};
    for (int p = 0; p < 3; ++p) {
        const ParsedBlock& first = blocks[2 * p];
        const ParsedBlock& second = blocks[2 * p + 1];
        ASSERT_EQ(first.data.size(), 8388608u) << "plane " << p;
        ASSERT_EQ(second.data.size(), 8u) << "plane " << p;
        EXPECT_EQ(std::memcmp(first.data.data(), planes[p], 8388608), 0) << "plane " << p;
        EXPECT_EQ(std::memcmp(second.data.data(), planes[p] + 1048576, 8), 0) << "plane " << p;
    }

    ImagePtr back(Tracking_ReadSlot(1, 0, false));
    ASSERT_TRUE(back);
    EXPECT_TRUE(PlanesEqual(*back, *image));
}

TEST_F(TrackingStore, ReplacedRecordIsReusedForTheNextWriteAndCutToSize) {
    ImagePtr large = MakeImage(700, 500, 16);
    ImagePtr small = MakeImage(30, 20, 17);
    ASSERT_TRUE(Tracking_WriteSlot(0, 1, large.get(), false));
    const std::vector<uint8_t> first = ReadBytes(Slot(0, 1));
    ImagePtr other = MakeImage(700, 500, 18);
    ASSERT_TRUE(Tracking_WriteSlot(0, 1, other.get(), false));
    EXPECT_EQ(ReadBytes(Tracking_SparePath()), first) << "the replaced record becomes the spare";

    // The spare is larger than the next record: what lands in the slot is
    // exactly the new record, nothing of the old one behind it.
    ASSERT_TRUE(Tracking_WriteSlot(0, 2, small.get(), false));
    const std::vector<uint8_t> bytes = ReadBytes(Slot(0, 2));
    EXPECT_EQ(ParseRecord(bytes, 4).size(), 3u);
    ImagePtr back(Tracking_ReadSlot(0, 2, false));
    ASSERT_TRUE(back);
    EXPECT_TRUE(PlanesEqual(*back, *small));
    ImagePtr stillThere(Tracking_ReadSlot(0, 1, false));
    ASSERT_TRUE(stillThere);
    EXPECT_TRUE(PlanesEqual(*stillThere, *other));
    EXPECT_EQ(TakeOnlyMessage(), "");
}

TEST_F(TrackingStore, FileIsTheSameWhateverTheNumberOfWorkers) {
    ImagePtr image = MakeImage(2000, 1500, 6);  // 3 blocks a plane
    SetEnv("PELLUCIDA_WORKERS", "1");
    ASSERT_TRUE(Tracking_WriteSlot(0, 1, image.get(), false));
    SetEnv("PELLUCIDA_WORKERS", "5");
    ASSERT_TRUE(Tracking_WriteSlot(0, 2, image.get(), false));
    EXPECT_EQ(ReadBytes(Slot(0, 1)), ReadBytes(Slot(0, 2)));
    ImagePtr back(Tracking_ReadSlot(0, 2, false));
    ASSERT_TRUE(back);
    EXPECT_TRUE(PlanesEqual(*back, *image));
}

// --- Links ----------------------------------------------------------------

TEST_F(TrackingStore, LinkRecordRedirectsToTheSlotItNames) {
    ImagePtr three = MakeImage(9, 7, 7);
    ImagePtr one = MakeImage(9, 7, 8);
    ASSERT_TRUE(Tracking_WriteSlot(3, 2, three.get(), false));
    ASSERT_TRUE(Tracking_WriteSlot(1, 3, one.get(), false));  // same first number, other second

    // Written by hand: first word 3.
    WriteBytes(Slot(1, 2), {3, 0, 0, 0});
    EXPECT_EQ(Tracking_ReadLink(1, 2), 3u);
    ImagePtr back(Tracking_ReadSlot(1, 2, false));
    ASSERT_TRUE(back);
    EXPECT_TRUE(PlanesEqual(*back, *three));
}

TEST_F(TrackingStore, WriteLinkMakesAFourByteRecordThatReadsAsItsTarget) {
    ImagePtr three = MakeImage(9, 7, 9);
    ASSERT_TRUE(Tracking_WriteSlot(3, 2, three.get(), false));
    ASSERT_TRUE(Tracking_WriteLink(1, 2, 3));
    EXPECT_EQ(ReadBytes(Slot(1, 2)), (std::vector<uint8_t>{3, 0, 0, 0}));
    EXPECT_EQ(Tracking_ReadLink(1, 2), 3u);
    ImagePtr back(Tracking_ReadSlot(1, 2, false));
    ASSERT_TRUE(back);
    EXPECT_TRUE(PlanesEqual(*back, *three));

    // A full record written over the link replaces it.
    ASSERT_TRUE(Tracking_WriteSlot(1, 2, three.get(), false));
    EXPECT_EQ(Tracking_ReadLink(1, 2), 0u);

    EXPECT_FALSE(Tracking_WriteLink(1, 2, 0)) << "0 would read as a full record";
    EXPECT_EQ(Tracking_ReadLink(1, 2), 0u);
    EXPECT_EQ(TakeOnlyMessage(), "");
}

TEST_F(TrackingStore, ReadLinkIsZeroForFullEmptyShortAndMissingFiles) {
    ImagePtr image = MakeImage(4, 4, 10);
    ASSERT_TRUE(Tracking_WriteSlot(5, 5, image.get(), false));
    EXPECT_EQ(Tracking_ReadLink(5, 5), 0u);
    EXPECT_EQ(Tracking_ReadLink(6, 6), 0u);
    WriteBytes(Slot(6, 7), {});
    EXPECT_EQ(Tracking_ReadLink(6, 7), 0u);
    WriteBytes(Slot(6, 8), {9, 9});
    EXPECT_EQ(Tracking_ReadLink(6, 8), 0u);
    WriteBytes(Slot(6, 9), {0x04, 0x03, 0x02, 0x01});
    EXPECT_EQ(Tracking_ReadLink(6, 9), 0x01020304u);
}

TEST_F(TrackingStore, LinksThatLoopEndInNull) {
    WriteBytes(Slot(1, 0), {2, 0, 0, 0});
    WriteBytes(Slot(2, 0), {1, 0, 0, 0});
    EXPECT_EQ(Tracking_ReadSlot(1, 0, false), nullptr);
    WriteBytes(Slot(4, 0), {4, 0, 0, 0});
    EXPECT_EQ(Tracking_ReadSlot(4, 0, false), nullptr);
}

// --- Failures -------------------------------------------------------------

TEST_F(TrackingStore, MissingSlotIsNullAndSaidOnTheConsole) {
    testing::internal::CaptureStdout();
    ImageBuffer* image = Tracking_ReadSlot(8, 8, false);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(image, nullptr);
    EXPECT_EQ(out, "Can't open tracking file!");
    EXPECT_EQ(TakeOnlyMessage(), "") << "the console, not a message box";

    // A link to a missing slot says the same.
    WriteBytes(Slot(1, 8), {8, 0, 0, 0});
    testing::internal::CaptureStdout();
    EXPECT_EQ(Tracking_ReadSlot(1, 8, false), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Can't open tracking file!");
}

TEST_F(TrackingStore, EmptyOrHeaderlessFileHoldsNoImage) {
    for (const std::vector<uint8_t>& bytes :
         {std::vector<uint8_t>{}, std::vector<uint8_t>{0, 0}, std::vector<uint8_t>{0, 0, 0, 0}}) {
        WriteBytes(Slot(3, 3), bytes);
        EXPECT_EQ(Tracking_ReadSlot(3, 3, false), nullptr) << bytes.size() << " bytes";
    }
}

TEST_F(TrackingStore, SlotInAFolderThatCannotBeMadeShowsCouldNotCreate) {
    // A folder below a plain file can never be created, whoever runs the test.
    WriteBytes(dir_ / "plain", {1});
    SetEnv("PELLUCIDA_STATE_DIR", (dir_ / "plain" / "state").string());
    ImagePtr image = MakeImage(6, 5, 11);
    ImagePtr before(Image_Clone(image.get()));
    EXPECT_FALSE(Tracking_WriteSlot(0, 1, image.get(), true));
    EXPECT_PRED2(EndsWith, TakeOnlyMessage(), kCouldNotCreate);
    EXPECT_TRUE(PlanesEqual(*image, *before)) << "nothing converted when nothing could be written";

    EXPECT_FALSE(Tracking_WriteLink(0, 2, 1));
    EXPECT_PRED2(EndsWith, TakeOnlyMessage(), kCouldNotCreate);
}

TEST_F(TrackingStore, SlotThatCannotBeReplacedShowsCouldNotModifyAndTheProgramGoesOn) {
    fs::create_directories(Slot(0, 1));  // a folder where the slot file should be
    ImagePtr image = MakeImage(6, 5, 12);
    EXPECT_FALSE(Tracking_WriteSlot(0, 1, image.get(), false));
    EXPECT_PRED2(EndsWith, TakeOnlyMessage(), kCouldNotModify);
    EXPECT_TRUE(fs::is_directory(Slot(0, 1)));
    EXPECT_FALSE(Tracking_WriteLink(0, 1, 2));
    EXPECT_PRED2(EndsWith, TakeOnlyMessage(), kCouldNotModify);

    // Still running, and other slots still work.
    ASSERT_TRUE(Tracking_WriteSlot(0, 2, image.get(), false));
    ImagePtr back(Tracking_ReadSlot(0, 2, false));
    ASSERT_TRUE(back);
    EXPECT_TRUE(PlanesEqual(*back, *image));
}

TEST_F(TrackingStore, FailedWriteShowsTheSwapErrorAndKeepsTheEarlierState) {
#ifndef __linux__
    GTEST_SKIP() << "needs /dev/full to make a write fail half way";
#else
    if (!fs::exists("/dev/full")) GTEST_SKIP() << "needs /dev/full to make a write fail half way";
    ImagePtr earlier = MakeImage(300, 200, 13);
    ASSERT_TRUE(Tracking_WriteSlot(0, 1, earlier.get(), false));
    const std::vector<uint8_t> earlierBytes = ReadBytes(Slot(0, 1));

    // The new contents land on a device that is always full.
    fs::remove(Tracking_SparePath());
    fs::create_symlink("/dev/full", Tracking_SparePath());
    ImagePtr later = MakeImage(300, 200, 14);
    ImagePtr laterBefore(Image_Clone(later.get()));
    EXPECT_FALSE(Tracking_WriteSlot(0, 1, later.get(), true));
    EXPECT_PRED2(EndsWith, TakeOnlyMessage(), kSwapError);
    EXPECT_EQ(ReadBytes(Slot(0, 1)), earlierBytes) << "the earlier state must survive";

    // The image was converted back even though the write failed.
    for (size_t i = 0; i < size_t{300} * 200; ++i) {
        ASSERT_EQ(later->red[i], laterBefore->red[i]);
        ASSERT_EQ(later->blue[i], laterBefore->blue[i]);
        ASSERT_LE(laterBefore->green[i] - later->green[i], 2);
    }
#endif
}

// --- Damaged files --------------------------------------------------------

class TrackingDamagedSlot : public TrackingStore {
protected:
    void SetUp() override {
        TrackingStore::SetUp();
        image_ = MakeImage(1100, 1000, 15);  // two blocks a plane
        ASSERT_TRUE(Tracking_WriteSlot(2, 2, image_.get(), false));
        good_ = ReadBytes(Slot(2, 2));
    }

    ImageBuffer* ReadWith(const std::vector<uint8_t>& bytes, std::string* console = nullptr) {
        WriteBytes(Slot(2, 2), bytes);
        testing::internal::CaptureStdout();
        ImageBuffer* image = Tracking_ReadSlot(2, 2, false);
        std::string out = testing::internal::GetCapturedStdout();
        if (console) *console = out;
        return image;
    }

    ImagePtr image_;
    std::vector<uint8_t> good_;
};

TEST_F(TrackingDamagedSlot, TruncatedFileIsRefused) {
    const size_t cuts[] = {5, 8, 15, 16, 17, 19, 20, 1000, good_.size() / 2, good_.size() - 1};
    for (size_t cut : cuts) {
        std::vector<uint8_t> bytes(good_.begin(), good_.begin() + static_cast<std::ptrdiff_t>(cut));
        EXPECT_EQ(ReadWith(bytes), nullptr) << "cut at " << cut;
    }
    ImagePtr whole(ReadWith(good_));
    ASSERT_TRUE(whole);
    EXPECT_TRUE(PlanesEqual(*whole, *image_));
}

TEST_F(TrackingDamagedSlot, HeaderAnnouncingMoreThanTheFileCanHoldIsRefused) {
    std::vector<uint8_t> bytes = good_;
    PutWord(bytes, 4, 0x7FFFFFFF);
    PutWord(bytes, 8, 0x7FFFFFFF);
    EXPECT_EQ(ReadWith(bytes), nullptr);
    bytes = good_;
    PutWord(bytes, 8, 1000 * 1000);  // a thousand times the rows: beyond any LZ4 ratio
    EXPECT_EQ(ReadWith(bytes), nullptr);
    bytes = good_;
    PutWord(bytes, 4, 0);
    EXPECT_EQ(ReadWith(bytes), nullptr);
    bytes = good_;
    PutWord(bytes, 4, 0x80000000u);  // no signed 32-bit width
    EXPECT_EQ(ReadWith(bytes), nullptr);
    bytes = good_;
    PutWord(bytes, 12, 0);
    EXPECT_EQ(ReadWith(bytes), nullptr);
    bytes = good_;
    PutWord(bytes, 12, 64);
    EXPECT_EQ(ReadWith(bytes), nullptr);
}

TEST_F(TrackingDamagedSlot, BlockLongerThanTheInputBufferIsRefused) {
    std::vector<uint8_t> bytes = good_;
    PutWord(bytes, 16, 16777217);
    EXPECT_EQ(ReadWith(bytes), nullptr);
}

TEST_F(TrackingDamagedSlot, BlockThatFailsToDecompressSaysErrorAndReadingGoesOn) {
    // The red plane's first block spoilt: it cannot decompress to 8 MiB.
    std::vector<uint8_t> bytes = good_;
    std::memset(bytes.data() + 20, 0xFF, 64);
    std::string console;
    ImagePtr back(ReadWith(bytes, &console));
    ASSERT_TRUE(back);
    EXPECT_EQ(console, "Error");
    // The spoilt block's range is zero, everything after it intact.
    const size_t blockSamples = 8388608 / 8;
    for (size_t i = 0; i < blockSamples; i += 4099) ASSERT_EQ(back->red[i], 0) << i;
    const size_t n = size_t{1100} * 1000;
    EXPECT_EQ(std::memcmp(back->red + blockSamples, image_->red + blockSamples, (n - blockSamples) * 8), 0);
    EXPECT_EQ(std::memcmp(back->green, image_->green, n * 8), 0);
    EXPECT_EQ(std::memcmp(back->blue, image_->blue, n * 8), 0);
}

TEST_F(TrackingDamagedSlot, GarbageNeverCrashes) {
    uint64_t state = 12345;
    for (int round = 0; round < 60; ++round) {
        std::vector<uint8_t> bytes = good_;
        bytes.resize(round % 3 == 0 ? 4096 : bytes.size());
        for (int k = 0; k < 16; ++k) {
            state = state * 6364136223846793005ull + 1442695040888963407ull;
            const size_t at = 16 + (state >> 33) % (bytes.size() - 16);
            bytes[at] = static_cast<uint8_t>(state >> 24);
        }
        ImagePtr back(ReadWith(bytes));
        if (back) {
            EXPECT_EQ(back->width, 1100);
            EXPECT_EQ(back->height, 1000);
        }
    }
}

}  // namespace
