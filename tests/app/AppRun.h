// The desktop program and pellucida-cli as the app tests run them, and the
// text files they leave.
#pragma once

#include "app/Cli.h"
#include "host/Shell_Log.h"
#include "support/Files.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

inline std::string ReadText(const std::filesystem::path& path) {
    const std::vector<uint8_t> bytes = ReadFileBytes(path);
    return std::string(bytes.begin(), bytes.end());
}

// A folder of the test's own for its files and for the program's state (slots,
// history, processing log), and the bundled sample.
class AppFolderTest : public testing::Test {
protected:
    TempDir dir;
    EnvScope state{"PELLUCIDA_STATE_DIR", dir.Path().string()};
    const std::string bundled = std::string(PELLUCIDA_TEST_SOURCE_DIR) + "/../samples/M94-Seestar-stack.tif";

    std::string Path(const std::string& name) { return dir.File(name); }
    std::string Log() { return ReadText(dir.Path() / kShellLogFileName); }
};

// How the program or pellucida-cli ended, and what it wrote to the console.
struct ProgramRun {
    int status = -1;
    std::string out, err;
};

// The real program on the headless backend, run in `folder` (so that a relative
// name in a box is the same on every run) with its state there too. The splash
// passes (unless the script watches it), the script runs, and the program is
// closed as a user would close it. A hang is ended from outside (status 124)
// after 300 s, far beyond what a script takes even under a sanitizer.
inline ProgramRun RunProgram(const std::filesystem::path& folder, const std::string& script,
                             const std::string& size = "800x480", bool pastSplash = true) {
    const std::filesystem::path file = folder / "script.txt", out = folder / "out.txt",
                                err = folder / "err.txt";
    std::ofstream(file) << (pastSplash ? "wait 20\n" : "") << script << "close\nanswer Close\n";
    const std::string command =
        "cd '" + folder.string() + "' && PELLUCIDA_STATE_DIR='" + folder.string() +
        "' PELLUCIDA_HEADLESS_SIZE=" + size +
        " timeout -k 10 300 '" PELLUCIDA_PROGRAM "' --host=headless '--script=" + file.string() + "' >'" +
        out.string() + "' 2>'" + err.string() + "'";
    const int raw = std::system(command.c_str());
    return {WIFEXITED(raw) ? WEXITSTATUS(raw) : -1, ReadText(out), ReadText(err)};
}

// pellucida-cli in this process, its console output captured.
inline ProgramRun RunCli(std::vector<std::string> args) {
    args.insert(args.begin(), "pellucida-cli");
    std::vector<char*> argv;
    for (auto& a : args) argv.push_back(a.data());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = Cli_Run(int(argv.size()), argv.data());
    return {status, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}
