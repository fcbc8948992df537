// Replays the fuzzers' kept inputs (seeds and every crasher found) for the
// archive reader, the .sqi decoder and the markup reader in every normal
// build, so a fixed fault stays fixed under the sanitizer build too.
#include "ToolkitFixture.h"
#include "support/Files.h"
#include "ui/archive/Resources_Archive.h"
#include "ui/archive/Sqi_Decode.h"

#include <filesystem>

namespace fs = std::filesystem;

namespace {

std::vector<fs::path> Corpus(const char* name) {
    std::vector<fs::path> files;
    const fs::path dir = fs::path(PELLUCIDA_TEST_SOURCE_DIR) / "fuzz" / "corpus" / name;
    std::error_code ec;
    for (const auto& item : fs::directory_iterator(dir, ec))
        if (item.is_regular_file()) files.push_back(item.path());
    return files;
}

TEST(FuzzCorpus, ArchiveInputs) {
    const auto files = Corpus("Archive");
    if (files.empty()) GTEST_SKIP() << "no archive corpus";
    for (const fs::path& file : files) {
        SCOPED_TRACE(file.filename().string());
        ResourceArchive archive;
        if (ResourceArchive_AddVolume(&archive, file.string().c_str()) != kResourceOk) continue;
        std::vector<ResourceRecordInfo> records;
        ResourceArchive_ListRecords(&archive, &records);
        for (const ResourceRecordInfo& record : records) {
            const std::vector<uint8_t> whole = ResourceArchive_LoadWhole(&archive, record.name.c_str());
            EXPECT_LE(whole.size(), fs::file_size(file));
        }
        EXPECT_TRUE(archive.entries.empty());
    }
}

TEST(FuzzCorpus, SqiInputs) {
    const auto files = Corpus("Sqi");
    if (files.empty()) GTEST_SKIP() << "no .sqi corpus";
    for (const fs::path& file : files) {
        SCOPED_TRACE(file.filename().string());
        const std::vector<uint8_t> data = ReadFileBytes(file);
        if (data.size() < 6) continue;
        // The same reading of the first six bytes as the fuzz target.
        constexpr uint32_t kCanvas = 96;
        std::vector<uint32_t> pixels(kCanvas * kCanvas, 0x00123456);
        SqiTarget t;
        t.x = static_cast<int32_t>(data[0] % 128) - 16;
        t.y = static_cast<int32_t>(data[1] % 128) - 16;
        t.width = data[2] % 160;
        t.height = data[3] % 160;
        t.fillMode = data[4] % 4;
        t.tint[0] = static_cast<uint16_t>(data[5] * 257);
        t.tint[1] = static_cast<uint16_t>(~data[5] * 131);
        t.tint[2] = 0xFFFF;
        t.pixels = pixels.data();
        t.pixelsPerRow = kCanvas;
        t.framebufferWidth = kCanvas;
        t.framebufferHeight = kCanvas;
        Sqi_Draw(data.data() + 6, data.size() - 6, t);
    }
}

TEST(FuzzCorpus, MarkupInputs) {
    const auto files = Corpus("Markup");
    if (files.empty()) GTEST_SKIP() << "no markup corpus";
    for (const fs::path& file : files) {
        SCOPED_TRACE(file.filename().string());
        const std::vector<uint8_t> data = ReadFileBytes(file);
        auto toolkit = ToolkitTest_Screen();
        testing::internal::CaptureStdout();
        Widget* first = Form_LoadText(toolkit.get(), "fuzz.xml", data.data(), data.size(), nullptr);
        Form_LoadText(toolkit.get(), "fuzz.xml", data.data(), data.size(), first);
        testing::internal::GetCapturedStdout();
        Toolkit_SetScreen(toolkit.get(), 333, 777, 336, nullptr);
        Layout_Apply(toolkit.get(), toolkit->root.get());
    }
}

}  // namespace
