// The font as the program gets it: the "font.fnt" entry of the `resources`
// archive that the build packs, read through the archive reader.
#include "DrawCanvas.h"
#include "host/Host_Os.h"
#include "ui/archive/Resources_Archive.h"

#include <filesystem>

namespace {

TEST(FontArchive, BuiltArchiveHoldsTheShippedFontWhole) {
    namespace fs = std::filesystem;
    std::string path;
    if (const char* env = std::getenv("PELLUCIDA_RESOURCES"); env && *env) path = env;
    for (const fs::path& candidate :
         {fs::path(Host_GetProgramDir()) / "resources", fs::path(Host_GetProgramDir()) / ".." / "resources"})
        if (path.empty() && fs::is_regular_file(candidate)) path = candidate.string();
    if (path.empty())
        GTEST_SKIP() << "no resources archive beside the test program (build pellucida_resources)";

    ResourceArchive archive;
    ASSERT_EQ(ResourceArchive_AddVolume(&archive, path.c_str()), kResourceOk);
    const std::vector<uint8_t> entry = ResourceArchive_LoadWhole(&archive, "font.fnt");
    EXPECT_EQ(entry, DrawTest_FontBytes());
    const auto font = Font_Load(entry.data(), entry.size());
    ASSERT_NE(font, nullptr);
    // The toolkit's text size on a 1920 x 1080 screen: trunc(48 * 0.38) = 18 px.
    const TextMetrics m = Font_MeasureText(*font, 18, "Keep");
    EXPECT_EQ(m.ascent + m.descent, 18);
    EXPECT_GT(m.width, 30);
    EXPECT_LT(m.width, 50);
}

}  // namespace
