// The `resources` archive that the build makes, read by a small reader of
// its own that follows only the file layout (slot walk to "#", then each
// name through its bucket chain), and then through the program's own code:
// the test form parses and every icon decodes.
#include "ArchiveBuilder.h"
#include "host/Host_Os.h"
#include "ui/Entities.h"
#include "ui/Toolkit.h"
#include "ui/Toolkit_Create.h"
#include "ui/WidgetKinds.h"
#include "ui/archive/Resources_Open.h"
#include "ui/archive/Sqi_Decode.h"
#include "ui/markup/Markup_Form.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

namespace fs = std::filesystem;

namespace {

constexpr const char* kTestForm = "Pellucida_TestForm.xml";
constexpr const char* kIcons[] = {"icon_alert.sqi", "icon_warning.sqi", "icon_information.sqi",
                                  "icon_error.sqi", "icon_success.sqi"};

// The archive beside the executables: the build folder, one up from the tests.
std::string ArchivePath() {
    if (const char* env = std::getenv("PELLUCIDA_RESOURCES"); env && *env) return env;
    for (const fs::path& candidate :
         {fs::path(Host_GetProgramDir()) / "resources", fs::path(Host_GetProgramDir()) / ".." / "resources"})
        if (fs::is_regular_file(candidate)) return candidate.string();
    return {};
}

#define REQUIRE_ARCHIVE(var)                                                   \
    const std::string var = ArchivePath();                                     \
    if (var.empty())                                                           \
    GTEST_SKIP() << "no resources archive beside the test program (build the " \
                    "pellucida_resources target)"

uint32_t Be32(const std::vector<uint8_t>& f, size_t at) {
    return (uint32_t(f.at(at)) << 24) | (uint32_t(f.at(at + 1)) << 16) | (uint32_t(f.at(at + 2)) << 8) |
           f.at(at + 3);
}
uint32_t Le32(const std::vector<uint8_t>& f, size_t at) {
    return f.at(at) | (uint32_t(f.at(at + 1)) << 8) | (uint32_t(f.at(at + 2)) << 16) |
           (uint32_t(f.at(at + 3)) << 24);
}
uint16_t Le16(const std::vector<uint8_t>& f, size_t at) {
    return uint16_t(f.at(at) | (f.at(at + 1) << 8));
}

struct Record {
    uint32_t offset, headerLength, dataLength;
    uint16_t span, next;
    std::string name;
};

Record RecordAt(const std::vector<uint8_t>& f, uint32_t slot) {
    Record r;
    r.offset = Be32(f, 78 + 8 * slot);
    r.headerLength = Le32(f, r.offset + 4);
    r.dataLength = Le32(f, r.offset + 8);
    r.span = Le16(f, r.offset + 12);
    r.next = Le16(f, r.offset + 16);
    for (size_t i = r.offset + 24; f.at(i) != 0; ++i) r.name.push_back(char(f[i]));
    return r;
}

TEST(ResourcesFile, EveryEntryIsReachedThroughItsBucketChain) {
    REQUIRE_ARCHIVE(path);
    std::ifstream in(path, std::ios::binary);
    const std::vector<uint8_t> f((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    ASSERT_GE(f.size(), 78u);
    EXPECT_EQ(std::string(f.begin() + 60, f.begin() + 64), "VDSK");
    EXPECT_EQ(std::string(f.begin() + 64, f.begin() + 68), "VDSK");
    const uint32_t slots = (uint32_t(f[76]) << 8) | f[77];

    // The slot walk: every record, advancing by its span, up to the index.
    std::map<std::string, Record> walked;
    const Record* index = nullptr;
    for (uint32_t slot = 0; slot < slots;) {
        if (Be32(f, 78 + 8 * slot) == 0) break;
        const Record r = RecordAt(f, slot);
        ASSERT_GE(r.span, 1u);
        ASSERT_GE(r.headerLength, 24u + r.name.size() + 1);
        ASSERT_LE(size_t(r.offset) + r.headerLength + r.dataLength, f.size()) << r.name;
        auto [it, fresh] = walked.emplace(r.name, r);
        ASSERT_TRUE(fresh) << "two records named " << r.name;
        if (r.name == "#") index = &it->second;
        slot += r.span;
    }
    ASSERT_NE(index, nullptr) << "the slot walk found no index record";
    ASSERT_GE(index->dataLength, 2u * 8192u);

    // Every other record through its bucket.
    const uint32_t indexData = index->offset + index->headerLength;
    for (const auto& [name, record] : walked) {
        if (name == "#") continue;
        uint32_t slot = Le16(f, indexData + 2 * archive_test::Bucket(name));
        bool found = false;
        for (uint32_t steps = 0; slot != 0 && steps < slots && !found; ++steps) {
            ASSERT_LT(slot, slots);
            const Record r = RecordAt(f, slot);
            if (r.name == name) {
                found = true;
                EXPECT_EQ(r.offset, record.offset);
            }
            slot = r.next;
        }
        EXPECT_TRUE(found) << name << " is not reachable through its bucket";
    }

    // Everything the build packs is there, with the bytes of its source.
    const fs::path source = fs::path(PELLUCIDA_TEST_SOURCE_DIR) / "..";
    for (const auto& item : fs::recursive_directory_iterator(source / "resources")) {
        if (!item.is_regular_file()) continue;
        const std::string name = item.path().filename().string();
        ASSERT_TRUE(walked.count(name)) << name;
        std::ifstream src(item.path(), std::ios::binary);
        const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(src)),
                                         std::istreambuf_iterator<char>());
        const Record& r = walked[name];
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), f.begin() + r.offset + r.headerLength)) << name;
        EXPECT_EQ(bytes.size(), r.dataLength) << name;
    }
    for (const char* icon : kIcons) EXPECT_TRUE(walked.count(icon)) << icon;
}

TEST(ResourcesFile, TestFormParsesWithEveryWidgetKind) {
    REQUIRE_ARCHIVE(path);
    auto toolkit = Toolkit_CreateBare();
    int code = -1;
    toolkit->archive = Resources_OpenPath(path.c_str(), &code);
    ASSERT_EQ(code, kResourceOk);
    Toolkit_SetScreen(toolkit.get(), 800, 480, 800, nullptr);
    Toolkit_SetMetricsFromScreen(toolkit.get());
    testing::internal::CaptureStdout();
    Widget* form = Form_Load(toolkit.get(), kTestForm, nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    ASSERT_NE(form, nullptr);
    EXPECT_EQ(form->id, Widget_PackId("TstF"));
    std::map<uint32_t, int> kinds;
    std::vector<Widget*> pending{form};
    while (!pending.empty()) {
        Widget* w = pending.back();
        pending.pop_back();
        ++kinds[w->type];
        for (auto& child : w->children) pending.push_back(child.get());
    }
    for (uint32_t kind :
         {kWidgetLayout, kWidgetButton, kWidgetLabel, kWidgetField, kWidgetFieldMulti, kWidgetBitmap,
          kWidgetList, kWidgetSelector, kWidgetLevelSetter, kWidgetImageView, kWidgetHistogram,
          kWidgetVirtualKeyboard, kWidgetApplet, kWidgetGestureArea, kWidgetForm})
        EXPECT_GT(kinds[kind], 0) << "no widget of kind " << kind;
    // The on-screen keyboard section is off by default; the numeric one is not in a section.
    EXPECT_EQ(Widget_FindById(form, Widget_PackId("Keyb")), nullptr);
    EXPECT_NE(Widget_FindById(form, Widget_PackId("KbNm")), nullptr);
    const auto* keep = Widget_Record<ButtonRecord>(Widget_FindById(form, Widget_PackId("BtKp")));
    ASSERT_NE(keep, nullptr);
    EXPECT_EQ(keep->text, "Keep");
    // The button row keeps its minimum height at the bottom of the screen.
    const PixelRect row = Widget_PixelRect(toolkit.get(), Widget_FindById(form, Widget_PackId("TsBt")));
    EXPECT_GE(row.height, Toolkit_MetricPixels(toolkit.get(), "&system-buttonSizePixelsX2;"));
    EXPECT_EQ(row.y + row.height, 480);
}

TEST(ResourcesFile, EveryIconDecodes) {
    REQUIRE_ARCHIVE(path);
    int code = -1;
    auto archive = Resources_OpenPath(path.c_str(), &code);
    ASSERT_EQ(code, kResourceOk);
    for (const char* icon : kIcons) {
        const std::vector<uint8_t> data = ResourceArchive_LoadWhole(archive.get(), icon);
        ASSERT_GT(data.size(), kSqiHeaderSize) << icon;
        constexpr int kSide = 48;
        std::vector<uint32_t> pixels(kSide * kSide, 0);
        SqiTarget t;
        t.pixels = pixels.data();
        t.pixelsPerRow = kSide;
        t.framebufferWidth = kSide;
        t.framebufferHeight = kSide;
        t.width = kSide;
        t.height = kSide;
        ASSERT_TRUE(Sqi_Draw(data.data(), data.size(), t)) << icon;
        // Opaque in the middle, background at the very corner (every icon is rounded).
        EXPECT_NE(pixels[(kSide / 2) * kSide + kSide / 4], 0u) << icon;
        EXPECT_EQ(pixels[0], 0u) << icon;
    }
}

}  // namespace
