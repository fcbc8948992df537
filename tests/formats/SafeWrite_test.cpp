// A failing save never destroys the file it replaces: each writer is made to
// fail part-way (a file-size limit makes the write itself fail) and the old
// file must be left exactly as it was, with no temporary file beside it.
#include "formats/File_ReadAll.h"
#include "formats/File_SafeWrite.h"
#include "formats/Jpeg_Write.h"
#include "formats/Png_Write.h"
#include "formats/Tiff_Write.h"
#include "host/Host_Path.h"
#include "image/Image.h"
#include "support/Files.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#if defined(__unix__) || defined(__APPLE__)
#include <sys/resource.h>
#include <csignal>
#define PELLUCIDA_HAVE_FSIZE_LIMIT 1
#endif

namespace {

namespace fs = std::filesystem;

class SafeWriteTest : public testing::Test {
protected:
    static std::string Contents(const std::string& path) {
        const std::vector<uint8_t> bytes = ReadFileBytes(path);
        return std::string(bytes.begin(), bytes.end());
    }
    static void Put(const std::string& path, const std::string& text) {
        WriteFileBytes(path, std::vector<uint8_t>(text.begin(), text.end()));
    }

    TempDir m_dir;
};

// Runs `write` with writes beyond `limit` bytes failing (EFBIG), as on a full disk.
#ifdef PELLUCIDA_HAVE_FSIZE_LIMIT
template <class Fn>
int WithFileSizeLimit(rlim_t limit, Fn write) {
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    void (*oldHandler)(int) = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit lowered{.rlim_cur = limit, .rlim_max = old.rlim_max};
    setrlimit(RLIMIT_FSIZE, &lowered);
    const int result = write();
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldHandler);
    return result;
}
#endif

}  // namespace

TEST_F(SafeWriteTest, AWriteReplacesTheFileOnlyWhenItIsCommitted) {
    const uint8_t data[] = {1, 2, 3};
    EXPECT_EQ(File_SafeWrite(m_dir.File("no/such/folder/out.bin").c_str(), data, 1), 0);
    EXPECT_EQ(File_SafeWrite(nullptr, data, 1), 0);
    EXPECT_EQ(m_dir.Count(), 0u) << "nothing created when nothing can be written";

    const std::string target = m_dir.File("out.bin");
    Put(target, "old contents");
    {
        SafeWriteFile file;
        ASSERT_TRUE(file.Open(target.c_str()));
        std::fputs("partial", file.Stream());
    }  // destroyed without Commit
    EXPECT_EQ(Contents(target), "old contents");
    EXPECT_EQ(m_dir.Count(), 1u);

    Put(target + ".tmp0", "someone else's");
    EXPECT_EQ(File_SafeWrite(target.c_str(), data, 3), 1);
    EXPECT_EQ(Contents(target), std::string("\x01\x02\x03", 3));
    EXPECT_EQ(Contents(target + ".tmp0"), "someone else's")
        << "a stale temporary is neither reused nor destroyed";
    EXPECT_EQ(m_dir.Count(), 2u) << "a temporary file left behind";
}

// A folder and a file named in other scripts, as UTF-8 like every name in the
// program: a save creates the file, a second one replaces it through its
// temporary, and the reader finds it.
TEST_F(SafeWriteTest, NamesInAnyScriptAreWrittenReplacedAndRead) {
    const std::string folder = m_dir.File("\u00D8rion_\u661F");
    ASSERT_TRUE(fs::create_directory(Host_Path(folder)));
    const std::string target = folder + "/M42_\u00E9.tif";
    const uint8_t first[] = {1}, second[] = {2, 3};
    ASSERT_EQ(File_SafeWrite(target.c_str(), first, 1), 1);
    ASSERT_EQ(File_SafeWrite(target.c_str(), second, 2), 1);
    FileBytes bytes;
    ASSERT_TRUE(File_ReadAll(target.c_str(), &bytes));
    EXPECT_EQ(std::vector<uint8_t>(bytes.data.get(), bytes.data.get() + bytes.size),
              std::vector<uint8_t>({2, 3}));
}

#ifdef PELLUCIDA_HAVE_FSIZE_LIMIT
TEST_F(SafeWriteTest, EveryWriterThatFailsMidWayKeepsTheOldFile) {
    // Noise compresses badly, so every encoded file is far above the limit.
    ImagePtr image = MakeImage(256, 256, 16, [](int32_t x, int32_t y, int c) {
        return int64_t(TestHash(uint64_t(y) << 20 | uint64_t(x) << 2 | uint64_t(c)) & 0xFFFF);
    });
    for (auto [name, write] :
         {std::pair{"old.tiff", &Tiff_Write}, {"old.png", &Png_Write}, {"old.jpg", &Jpeg_Write}}) {
        SCOPED_TRACE(name);
        const std::string target = m_dir.File(name);
        Put(target, "the user's previous save");
        EXPECT_EQ(WithFileSizeLimit(4096, [&] { return write(image.get(), target.c_str()); }), 0);
        EXPECT_EQ(Contents(target), "the user's previous save");
        EXPECT_EQ(m_dir.Count(), 1u) << "temporary file left behind";
        fs::remove(target);
        // Without the limit the same write succeeds.
        EXPECT_EQ(write(image.get(), target.c_str()), 1);
        fs::remove(target);
    }
}
#endif
