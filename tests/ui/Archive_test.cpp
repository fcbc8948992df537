// The resource archive: header checks, the slot walk, bucket chains, entry
// reads and seeks, with archives written by the tests' own builder; then the
// archive the build makes, with the test form in it.
#include "ToolkitFixture.h"
#include "support/Files.h"
#include "support/LittleEndian.h"
#include "ui/archive/Resources_Archive.h"

#include <algorithm>
#include <tuple>

namespace {

// A small writer of resource archives, written from the file layout alone
// (not from the reader): a 78-byte header, 8-byte slots, the index record "#"
// in slot 0 and one record per entry, chained per bucket.
uint32_t Bucket(const std::string& name) {
    uint32_t h = 0;
    for (unsigned char c : name) {
        h += c;
        h += h << 10;
        h ^= h >> 6;
    }
    h += h << 3;
    h ^= h >> 11;
    return h & 0x1FFF;
}

struct Entry {
    std::string name;
    std::vector<uint8_t> data;
};

struct Options {
    std::string type = "VDSK";
    std::string creator = "VDSK";
    bool withIndex = true;
};

// The slot table is big-endian, the records little-endian.
void PutBe32(std::vector<uint8_t>& b, size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i) b[at + i] = uint8_t(v >> (24 - 8 * i));
}

// Byte offsets of what Build wrote, so tests can damage chosen fields.
struct Layout {
    std::vector<uint32_t> recordOffsets;  // per slot
};

std::vector<uint8_t> Build(const std::vector<Entry>& entries, const Options& options = {},
                           Layout* layout = nullptr) {
    std::vector<Entry> records;
    if (options.withIndex) records.push_back({"#", std::vector<uint8_t>(2 * 8192, 0)});
    for (const Entry& e : entries) records.push_back(e);
    const uint32_t slots = uint32_t(records.size());
    std::vector<uint8_t> file(78 + 8 * slots, 0);
    std::copy_n(options.type.begin(), 4, file.begin() + 60);
    std::copy_n(options.creator.begin(), 4, file.begin() + 64);
    file[76] = uint8_t(slots >> 8);
    file[77] = uint8_t(slots);
    // Bucket heads and chains, built from the last entry back: the first entry
    // of a bucket is its head, the later ones hang off the previous one's "next".
    std::vector<uint16_t> heads(8192, 0);
    std::vector<uint16_t> next(slots, 0);
    for (uint32_t s = slots; s-- > (options.withIndex ? 1u : 0u);) {
        const uint32_t b = Bucket(records[s].name);
        next[s] = heads[b];
        heads[b] = uint16_t(s);
    }
    if (options.withIndex)
        for (uint32_t b = 0; b < 8192; ++b) LittleEndian_Set(records[0].data, 2 * b, heads[b], 2);
    if (layout) layout->recordOffsets.assign(slots, 0);
    for (uint32_t s = 0; s < slots; ++s) {
        const uint32_t offset = uint32_t(file.size());
        if (layout) layout->recordOffsets[s] = offset;
        PutBe32(file, 78 + 8 * s, offset);
        const uint32_t headerLength = (24 + uint32_t(records[s].name.size()) + 1 + 3) & ~3u;
        std::vector<uint8_t> head(headerLength, 0);
        LittleEndian_Set(head, 4, headerLength, 4);
        LittleEndian_Set(head, 8, uint32_t(records[s].data.size()), 4);
        LittleEndian_Set(head, 12, 1, 2);
        LittleEndian_Set(head, 16, next[s], 2);
        for (size_t i = 0; i < records[s].name.size(); ++i) head[24 + i] = uint8_t(records[s].name[i]);
        file.insert(file.end(), head.begin(), head.end());
        file.insert(file.end(), records[s].data.begin(), records[s].data.end());
    }
    return file;
}

std::vector<uint8_t> Bytes(const std::string& text) {
    return std::vector<uint8_t>(text.begin(), text.end());
}

std::string WriteTemp(const std::vector<uint8_t>& bytes, const std::string& name) {
    const std::filesystem::path path = std::filesystem::temp_directory_path() / ("pellucida_ui_" + name);
    WriteFileBytes(path, bytes);
    return path.string();
}

// Two different names that fall in the same bucket.
std::pair<std::string, std::string> CollidingNames() {
    std::vector<int> seen(8192, -1);
    for (int i = 0;; ++i) {
        const std::string name = "entry" + std::to_string(i) + ".xml";
        const uint32_t b = Bucket(name);
        if (seen[b] >= 0) return {"entry" + std::to_string(seen[b]) + ".xml", name};
        seen[b] = i;
    }
}

struct OpenedArchive {
    ResourceArchive archive;
    int code = -1;
    ResourceEntry* entry = nullptr;

    // Opens `name` for reading into `entry`; the code it gave.
    int OpenEntry(const std::string& name) {
        return ResourceArchive_OpenEntry(&archive, name.c_str(), kResourceModeRead, &entry);
    }
};

std::unique_ptr<OpenedArchive> Open(const std::vector<uint8_t>& file, const std::string& tag) {
    auto opened = std::make_unique<OpenedArchive>();
    opened->code = ResourceArchive_AddVolume(&opened->archive, WriteTemp(file, tag).c_str());
    return opened;
}

TEST(ResourceArchiveHeader, OnlyAVdskArchiveWithAnIndexIsAddedAndAZeroSpanBeforeTheIndexGivesEleven) {
    for (auto [tag, options, code] : {std::tuple{"ok", Options{}, kResourceOk},
                                      {"creator", Options{.creator = "VDSX"}, kResourceCorrupt},
                                      {"type", Options{.type = "DATA"}, kResourceCorrupt},
                                      {"noindex", Options{.withIndex = false}, kResourceNoIndex}}) {
        auto a = Open(Build({{"a.xml", Bytes("x")}}, options), tag);
        EXPECT_EQ(a->code, code) << tag;
        EXPECT_EQ(a->archive.volumes.size(), code == kResourceOk ? 1u : 0u) << tag;
    }
    ResourceArchive archive;
    EXPECT_EQ(ResourceArchive_AddVolume(&archive, "/nonexistent/pellucida/resources"), kResourceCannotOpen);
    ResourceEntry* entry = nullptr;
    EXPECT_EQ(ResourceArchive_OpenEntry(nullptr, "a.xml", kResourceModeRead, &entry), kResourceNoTarget);
    // Put an entry before the index: the walk must step over it by its span.
    Layout layout;
    std::vector<uint8_t> file = Build({{"a.xml", Bytes("x")}, {"#", std::vector<uint8_t>(16384, 0)}},
                                      Options{.withIndex = false}, &layout);
    EXPECT_EQ(Open(file, "spanok")->code, kResourceOk);
    file[layout.recordOffsets[0] + 12] = 0;  // span of slot 0
    EXPECT_EQ(Open(file, "span0")->code, kResourceNoIndex);
}

TEST(ResourceArchiveLookup, TwoNamesInOneBucketAreBothFoundAndAMissingOneOrABrokenChainIsNot) {
    const auto [first, second] = CollidingNames();
    ASSERT_EQ(Bucket(first), Bucket(second));
    ASSERT_EQ(Resources_Hash(first.c_str()) & 0x1FFF, Bucket(first));
    auto a = Open(Build({{first, Bytes("one")}, {"empty.txt", {}}, {second, Bytes("second")}}), "bucket");
    ASSERT_EQ(a->code, kResourceOk);
    EXPECT_EQ(ResourceArchive_LoadWhole(&a->archive, first.c_str()), Bytes("one"));
    EXPECT_EQ(ResourceArchive_LoadWhole(&a->archive, second.c_str()), Bytes("second"));
    EXPECT_TRUE(ResourceArchive_LoadWhole(&a->archive, "empty.txt").empty());
    EXPECT_TRUE(ResourceArchive_LoadWhole(&a->archive, "nothere.txt").empty());
    EXPECT_TRUE(a->archive.entries.empty()) << "every entry read whole is closed again";
    // A name missing from its chain: the only record's "next": the end of the chain, beyond the slots,
    // itself.
    for (auto [next, code] :
         {std::pair{0, kResourceNotFound}, {99, kResourceCorrupt}, {1, kResourceCorrupt}}) {
        Layout layout;
        std::vector<uint8_t> file = Build({{first, Bytes("one")}}, {}, &layout);
        LittleEndian_Set(file, layout.recordOffsets[1] + 16, uint32_t(next), 2);
        EXPECT_EQ(Open(file, "chain" + std::to_string(next))->OpenEntry(second), code) << next;
    }
}

TEST(ResourceArchiveLookup, EmptyBucketReadsNoRecordTheIndexIsFoundByTheWalkNewerVolumesFirst) {
    // Every entry record is made unreadable (its slot points past the end of
    // the file): had the lookup read one, it would report a broken archive.
    Layout layout;
    std::vector<uint8_t> file = Build({{"a.xml", Bytes("x")}, {"b.xml", Bytes("y")}}, {}, &layout);
    for (uint32_t slot = 1; slot < 3; ++slot) PutBe32(file, 78 + 8 * slot, 0x7FFFFFF0);
    auto a = Open(file, "empty_bucket");
    ASSERT_EQ(a->code, kResourceOk);
    const std::string missing = "missing.xml";
    ASSERT_NE(Bucket(missing), Bucket("a.xml"));
    ASSERT_NE(Bucket(missing), Bucket("b.xml"));
    EXPECT_EQ(a->OpenEntry(missing), kResourceNotFound);
    EXPECT_EQ(a->entry, nullptr);
    // The damaged records themselves are reported as a broken archive.
    EXPECT_EQ(a->OpenEntry("a.xml"), kResourceCorrupt);
    // The index itself is found by the walk, and a newer volume is searched first.
    a = Open(Build({{"a.xml", Bytes("old")}, {"b.xml", Bytes("only old")}}), "vol_old");
    ASSERT_EQ(a->OpenEntry("#"), kResourceOk);
    EXPECT_EQ(a->entry->dataLength, 16384u);
    ResourceEntry_Close(&a->archive, a->entry);
    EXPECT_TRUE(a->archive.entries.empty());
    ASSERT_EQ(ResourceArchive_AddVolume(&a->archive,
                                        WriteTemp(Build({{"a.xml", Bytes("new")}}), "vol_new").c_str()),
              kResourceOk);
    EXPECT_EQ(ResourceArchive_LoadWhole(&a->archive, "a.xml"), Bytes("new"));
    EXPECT_EQ(ResourceArchive_LoadWhole(&a->archive, "b.xml"), Bytes("only old"));
}

TEST(ResourceEntryRead, ReadsAndSeeksAreHeldToTheData) {
    auto a = Open(Build({{"data.bin", Bytes("0123456789")}}), "read");
    ASSERT_EQ(a->OpenEntry("data.bin"), kResourceOk);
    ResourceEntry* entry = a->entry;
    char buffer[8] = {};
    EXPECT_EQ(ResourceEntry_Read(&a->archive, entry, nullptr, 1), kResourceNoTarget);  // only advances
    EXPECT_EQ(ResourceEntry_Read(&a->archive, entry, buffer, 3), kResourceOk);
    EXPECT_EQ(std::string(buffer, 3), "123");
    std::fill(std::begin(buffer), std::end(buffer), '.');
    EXPECT_EQ(ResourceEntry_Read(&a->archive, entry, buffer, 8), kResourceShortRead);
    EXPECT_EQ(std::string(buffer, 8), "456789..");
    EXPECT_EQ(entry->position, 10u);
    EXPECT_EQ(ResourceEntry_Read(&a->archive, entry, buffer, 1), kResourceShortRead);
    EXPECT_EQ(buffer[0], '4');
    // Seeks from the end (2), the position (1) and the start (0) stay inside the data.
    for (auto [offset, from, position] :
         {std::tuple{5, 2, 10u}, {-3, 2, 7u}, {-100, 1, 0u}, {2, 0, 2u}, {3, 1, 5u}}) {
        ResourceEntry_Seek(&a->archive, entry, offset, from);
        EXPECT_EQ(entry->position, position) << offset << " from " << from;
    }
    EXPECT_EQ(ResourceEntry_Read(&a->archive, entry, buffer, 1), kResourceOk);
    EXPECT_EQ(buffer[0], '5');
}

TEST(ResourceOpenDeathTest, MissingArchiveEndsWithStatusZero) {
    // The program folder of the test binary holds no archive of that name
    // unless the build put one there; the test is meaningful only without it.
    if (std::filesystem::exists(Resources_DefaultPath()))
        GTEST_SKIP() << "an archive lies beside the test program";
    Host_SelectBackend("headless");
    EXPECT_EXIT(Resources_Open(), ::testing::ExitedWithCode(0), "could not find the 'resources' file");
}

// The `resources` archive that the build makes, read through the program's
// own reader (itself checked against the file layout above): every file of
// resources/ is there with its bytes and the test form parses cleanly.
// (Markup_test makes every widget kind; the widget tests reach the test form's
// widgets by identifier. Every icon the build packs is drawn in the toolkit's
// golden pictures: information and alert on the test form, the others in the
// message boxes.)
TEST_F(ToolkitTest, TheArchiveHoldsEveryFileOfResourcesAndTheTestFormParsesWithItsButtonRow) {
    for (const auto& item : std::filesystem::recursive_directory_iterator(
             std::filesystem::path(PELLUCIDA_TEST_SOURCE_DIR) / ".." / "resources")) {
        if (!item.is_regular_file()) continue;
        const std::string name = item.path().filename().string();
        EXPECT_EQ(ResourceArchive_LoadWhole(tk->archive.get(), name.c_str()), ReadFileBytes(item.path()))
            << name;
    }
    // The test form parses with its sections and button row.
    testing::internal::CaptureStdout();
    Form_Load(tk.get(), kTestFormEntry, form);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "") << "the form's markup is balanced";
    EXPECT_EQ(form->id, Widget_PackId("TstF"));
    // The on-screen keyboard section is off by default; the numeric one is not in a section.
    EXPECT_EQ(Widget_FindById(form, Widget_PackId("Keyb")), nullptr);
    EXPECT_NE(Widget_FindById(form, Widget_PackId("KbNm")), nullptr);
    EXPECT_EQ(Widget_Record<ButtonRecord>(W("BtKp"))->text, "Keep");
    // The button row keeps its minimum height at the bottom of the screen.
    const PixelRect row = R(W("TsBt"));
    EXPECT_GE(row.height, Toolkit_MetricPixels(tk.get(), "&system-buttonSizePixelsX2;"));
    EXPECT_EQ(row.y + row.height, height);
}

}  // namespace
