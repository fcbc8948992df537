// A run that ended without closing is told from one that is alive: a child
// process stores a state and ends without closing. POSIX only (fork).
#include "image/ImageFixtures.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

// A marker is claimed only when no living run holds it: not this process's
// own, but that of a child that ended without closing, once.
TEST_F(History, OnlyRunsThatEndedWithoutClosingAreClaimed) {
    HistoryRun alive;
    ASSERT_TRUE(History_BeginRun(Folder(), &alive));
    EXPECT_TRUE(History_ClaimDeadRuns(Folder()).empty());

    // A child that stores a state, leaves a half-written one and ends without
    // closing. (Death tests re-run the program, which would give it a folder
    // of its own.)
    const pid_t child = fork();
    if (child == 0) {
        HistoryRun crashed;
        ImagePtr image = MakeImage(8, 8, 16, false, 9);
        if (!History_BeginRun(Folder(), &crashed)) std::_Exit(1);
        History_Store(&crashed, State("Bin", 1), image.get(), nullptr, kHistoryBudgetBytes);
        WriteFileBytes(Host_Path(File((crashed.id + "_000002.pst.tmp").c_str())), {1, 2});
        std::_Exit(0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    HistoryRun closed;
    ASSERT_TRUE(History_BeginRun(Folder(), &closed));
    History_EndRun(&closed);

    const std::vector<std::string> dead = History_ClaimDeadRuns(Folder());
    ASSERT_EQ(dead.size(), 1u);
    EXPECT_NE(dead[0], alive.id);
    const std::vector<HistoryEntry> list = History_List(Folder());
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0].run, dead[0]);
    EXPECT_FALSE(fs::exists(Host_Path(File((dead[0] + "_000002.pst.tmp").c_str()))));
    EXPECT_TRUE(History_ClaimDeadRuns(Folder()).empty()) << "claimed once";
    EXPECT_TRUE(fs::exists(Host_Path(File((alive.id + ".run").c_str()))));
    History_EndRun(&alive);
    EXPECT_FALSE(fs::exists(Host_Path(File((alive.id + ".run").c_str()))));
}

}  // namespace
