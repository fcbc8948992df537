// The history: state files round trip with and without mask and mono, the
// list is newest first, the budget drops the oldest but never the newest,
// damaged files are refused (and the fuzz corpus replayed).
#include "fuzz/FuzzCheck.h"
#include "image/ImageFixtures.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

namespace fs = std::filesystem;

namespace {

TEST_F(History, StatesRoundTripWithAndWithoutMaskAndMono) {
    const struct {
        int32_t width, height;
        int depth;
        bool mono, mask;
    } cases[] = {
        {7, 5, 16, false, false}, {6, 4, 30, true, false},       {9, 3, 30, false, true},
        {5, 5, 12, true, true},   {1100, 1000, 30, false, true},  // two blocks a plane
    };
    uint32_t seed = 1;
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << c.width << " x " << c.height << (c.mono ? " mono" : "") << (c.mask ? " mask" : ""));
        ImagePtr image = MakeImage(c.width, c.height, c.depth, c.mono, seed++);
        ImagePtr mask = c.mask ? MakeImage(c.width, c.height, 16, false, seed++) : nullptr;
        const std::string path = File("state.pst");
        HistoryState written = State("Mirror left-right", 1700000000123);
        written.linear = !c.mono;  // every pair of the two load flags, over the four small cases
        written.tracking = !c.mask;
        ASSERT_TRUE(History_WriteFile(path, written, image.get(), mask.get()));
        EXPECT_EQ(dir_.Count(), 1u) << "no temporary file left";

        HistoryState header, whole;
        ImagePtr backImage, backMask;
        ASSERT_TRUE(History_ReadHeader(path, &header));
        ASSERT_TRUE(History_ReadFile(path, &whole, &backImage, &backMask));
        for (const HistoryState& s : {header, whole}) {
            EXPECT_EQ(s.caption, "Mirror left-right");
            EXPECT_EQ(s.name, "/data/M 94.tif");
            EXPECT_EQ(s.timeMs, 1700000000123);
            EXPECT_EQ(std::tuple(s.width, s.height, s.mono, s.hasMask, s.linear, s.tracking),
                      std::tuple(c.width, c.height, c.mono, c.mask, !c.mono, !c.mask));
        }
        ASSERT_TRUE(backImage);
        EXPECT_TRUE(SameImage(*backImage, *image));
        ASSERT_EQ(backMask != nullptr, c.mask);
        if (c.mask) {
            EXPECT_TRUE(SameImage(*backMask, *mask));
        }
    }
}

TEST_F(History, ListIsNewestFirstAcrossRunsAndTheBudgetKeepsTheNewest) {
    HistoryRun first, second;
    ASSERT_TRUE(History_BeginRun(Folder(), &first));
    ASSERT_TRUE(History_BeginRun(Folder(), &second));
    ASSERT_NE(first.id, second.id);
    ImagePtr image = MakeImage(64, 48, 30, false, 7);  // noise: every state about the same size
    const uint64_t none = ~uint64_t{0};
    const std::string a =
        History_Store(&first, State("File loaded: a.tif", 1000), image.get(), nullptr, none);
    const std::string c = History_Store(&second, State("Bin", 3000), image.get(), nullptr, none);
    const std::string b = History_Store(&first, State("Crop", 2000), image.get(), nullptr, none);
    ASSERT_FALSE(a.empty());
    EXPECT_EQ(Host_PathText(Host_Path(b).filename()), first.id + "_000002.pst");
    WriteFileBytes(Host_Path(File("notes.pst")), {'x'});  // not a state: left out of the list

    std::vector<HistoryEntry> list = History_List(Folder());
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(std::vector<std::string>({list[0].path, list[1].path, list[2].path}),
              std::vector<std::string>({c, b, a}));
    EXPECT_EQ(std::vector<std::string>({list[0].run, list[1].run, list[2].run}),
              std::vector<std::string>({second.id, first.id, first.id}));
    EXPECT_EQ(list[1].state.caption, "Crop");
    EXPECT_EQ(list[1].bytes, fs::file_size(Host_Path(b)));

    // Room for two: the oldest goes, and the damaged file with it.
    History_Trim(Folder(), list[0].bytes + list[1].bytes);
    EXPECT_FALSE(fs::exists(Host_Path(a)));
    EXPECT_FALSE(fs::exists(Host_Path(File("notes.pst"))));
    EXPECT_EQ(History_List(Folder()).size(), 2u);
    // Room for nothing: the newest stays all the same, as does a store.
    History_Trim(Folder(), 0);
    list = History_List(Folder());
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0].path, c);
    const std::string d = History_Store(&first, State("Wipe", 4000), image.get(), nullptr, 0);
    list = History_List(Folder());
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0].path, d);

    History_RemoveRun(Folder(), first.id);
    EXPECT_TRUE(History_List(Folder()).empty());
    History_EndRun(&first);
    History_EndRun(&second);
}

TEST_F(History, DamagedFilesAreRefused) {
    ImagePtr image = MakeImage(40, 30, 30, false, 3);
    ImagePtr mask = MakeImage(40, 30, 16, false, 4);
    const std::string path = File("good.pst");
    ASSERT_TRUE(History_WriteFile(path, State("Bin", 5), image.get(), mask.get()));
    const Bytes good = ReadFileBytes(Host_Path(path));
    const size_t planes = 40 + 3 + 14;  // the first block's length word, after caption and name

    auto refused = [&](const Bytes& bytes) {
        WriteFileBytes(Host_Path(File("bad.pst")), bytes);
        HistoryState state;
        ImagePtr back, backMask;
        const bool read = History_ReadFile(File("bad.pst"), &state, &back, &backMask);
        return !read && !back && !backMask;
    };
    const size_t cuts[] = {0, 4, 39, 50, planes + 2, good.size() / 2, good.size() - 1};
    for (size_t cut : cuts)
        EXPECT_TRUE(refused(Bytes(good.begin(), good.begin() + std::ptrdiff_t(cut)))) << "cut at " << cut;
    Bytes longer = good;
    longer.push_back(0);
    EXPECT_TRUE(refused(longer)) << "a byte after the last block";

    const std::pair<size_t, uint32_t> edits[] = {
        {0, 0x53484C51},     // magic
        {4, 2},              // version
        {8, 0},              // width
        {12, 0x80000000u},   // height beyond a signed 32-bit value
        {8, 100000},         // more samples than the file could hold
        {16, 33},            // bit depth
        {20, 16},            // an unknown flag
        {20, 3},             // mono, but the planes differ
        {32, 5000},          // caption longer than any caption
        {36, 4000},          // a name that swallows the planes
        {planes, 16777217},  // a block longer than the input buffer
        {planes, 0x30},      // a block of the wrong length: decompresses short
        {16, 8},             // samples above the maximum of the depth
    };
    for (const auto& [at, word] : edits) {
        Bytes bytes = good;
        std::memcpy(&bytes[at], &word, 4);
        EXPECT_TRUE(refused(bytes)) << "word at " << at << " = " << word;
    }
    EXPECT_FALSE(refused(good));
    HistoryState state;
    ImagePtr none, noMask;
    EXPECT_FALSE(History_ReadFile(File("missing.pst"), &state, &none, &noMask));

    // What cannot be written whole is not left behind: a folder that is not there.
    EXPECT_FALSE(History_WriteFile(File("no/such/folder.pst"), State("Bin", 5), image.get(), nullptr));
    ImagePtr smallMask = MakeImage(4, 3, 16, false, 5);
    EXPECT_FALSE(History_WriteFile(File("sizes.pst"), State("Bin", 5), image.get(), smallMask.get()));
    EXPECT_FALSE(fs::exists(Host_Path(File("sizes.pst"))));
}

// The reader's fuzz corpus (every crasher the fuzzer ever found is kept
// there), replayed in every build, the sanitizer build included.
TEST_F(History, EveryKeptFuzzInputIsReadOrRefusedSafely) {
    const fs::path corpus = fs::path(PELLUCIDA_TEST_SOURCE_DIR) / "fuzz" / "corpus" / "HistoryState";
    ASSERT_TRUE(fs::is_directory(corpus));
    int inputs = 0, states = 0;
    for (const auto& entry : fs::directory_iterator(corpus)) {
        SCOPED_TRACE(entry.path().filename().string());
        HistoryState state;
        ImagePtr image, mask;
        const bool read = History_ReadFile(entry.path().string(), &state, &image, &mask);
        ++inputs;
        states += read;
        EXPECT_EXIT((Fuzz_CheckImage(image.get()), Fuzz_CheckImage(mask.get()), std::exit(0)),
                    testing::ExitedWithCode(0), "");
    }
    EXPECT_GE(inputs, 4);
    EXPECT_GE(states, 2);  // the seeds hold real states, one with a mask
}

}  // namespace
