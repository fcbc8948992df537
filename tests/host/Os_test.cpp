// The program's own folder and its writable state folder.
#include "host/Host_Os.h"

#include "support/Files.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

TEST(HostOs, ProgramDirIsTheFolderOfTheRunningExecutable) {
    std::string dir = Host_GetProgramDir();
    ASSERT_FALSE(dir.empty());
    EXPECT_EQ(dir.back(), Host_PathSeparator());
    EXPECT_TRUE(std::filesystem::exists(dir + ExecutableName("host_tests"))) << dir;
}

TEST(HostOs, StateDirOverrideIsCreatedAndEndsWithASeparator) {
    TempDir temp;
    const std::filesystem::path dir = temp.Path() / "deep";
    std::string got;
    {
        EnvScope state("PELLUCIDA_STATE_DIR", dir.string());
        got = Host_GetDataDir();
    }
    EXPECT_EQ(got, dir.string() + Host_PathSeparator());
    EXPECT_TRUE(std::filesystem::is_directory(dir));
}

TEST(HostOs, WritableProgramFolderIsUsedForState) {
    UnsetEnv("PELLUCIDA_STATE_DIR");
    if (!IsWritableDir(Host_GetProgramDir())) GTEST_SKIP() << "the build folder is not writable";
    EXPECT_EQ(Host_GetDataDir(), Host_GetProgramDir());
}

}  // namespace
