// Replays a fuzzer's kept inputs (its seeds and every crasher it ever found)
// in every build, the sanitizer build included, so that each finding stays
// fixed. Each input runs in a child process: a trap fails the test and names
// the file instead of ending the test program.
#pragma once

#include "support/Files.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

// Runs step(bytes, path) for every file of tests/fuzz/corpus/<name>.
template <class Step>
void Fuzz_Replay(const char* name, Step step) {
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(PELLUCIDA_TEST_SOURCE_DIR) / "fuzz" / "corpus" / name;
    ASSERT_TRUE(fs::is_directory(folder)) << folder.string();
    size_t files = 0;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (!entry.is_regular_file()) continue;
        SCOPED_TRACE(entry.path().filename().string());
        const std::vector<uint8_t> bytes = ReadFileBytes(entry.path());
        EXPECT_EXIT((step(bytes, entry.path()), std::exit(0)), testing::ExitedWithCode(0), "");
        ++files;
    }
    EXPECT_GT(files, 0u) << "empty corpus " << folder.string();
}
