// The program's own folder and its writable state folder.
#include "host/Host_Os.h"

#include <gtest/gtest.h>

#include <unistd.h>
#include <cstdlib>
#include <filesystem>

namespace {

TEST(HostOs, ProgramDirIsTheFolderOfTheRunningExecutable) {
    std::string dir = Host_GetProgramDir();
    ASSERT_FALSE(dir.empty());
    EXPECT_EQ(dir.back(), Host_PathSeparator());
    EXPECT_TRUE(std::filesystem::exists(dir + "host_tests")) << dir;
}

TEST(HostOs, StateDirOverrideIsCreatedAndEndsWithASeparator) {
    auto dir =
        std::filesystem::temp_directory_path() / ("pellucida_state_" + std::to_string(getpid())) / "deep";
    setenv("PELLUCIDA_STATE_DIR", dir.c_str(), 1);
    std::string got = Host_GetDataDir();
    unsetenv("PELLUCIDA_STATE_DIR");
    EXPECT_EQ(got, dir.string() + "/");
    EXPECT_TRUE(std::filesystem::is_directory(dir));
    std::filesystem::remove_all(dir.parent_path());
}

TEST(HostOs, WritableProgramFolderIsUsedForState) {
    unsetenv("PELLUCIDA_STATE_DIR");
    if (access(Host_GetProgramDir().c_str(), W_OK) != 0) GTEST_SKIP() << "the build folder is not writable";
    EXPECT_EQ(Host_GetDataDir(), Host_GetProgramDir());
}

}  // namespace
