// The SDL2 backend's desktop file dialogs without a desktop: the portal through
// a fake portal on a private session bus, zenity through a stub on PATH that
// records its arguments, and the message when neither exists.
#if PELLUCIDA_HAVE_SDL2
#include "host/sdl2/Portal_FileChooser.h"
#include "host/sdl2/Sdl2_Private.h"
#include "host/sdl2/Zenity.h"
#include "support/Files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <future>
#include <map>
#include <optional>
#include <thread>
#include <utility>

extern char** environ;

namespace {

using testing::Contains;
using testing::Not;
using Result = DesktopDialogResult;

constexpr const char* kNoBus = "unix:path=/nonexistent/pellucida-test-bus";
// The fake portal is a template for python-dbusmock, a library made for
// standing in for D-Bus services: it owns the name, serves the object and
// stays on the bus, and the template only records the call and answers it.
// Debian's package installs it for Debian's own interpreter.
constexpr const char* kFakePortal = PELLUCIDA_TEST_SOURCE_DIR "/support/fake_portal.py";

DesktopDialogRequest Request(bool save, const std::string& proposed = "", uint64_t x11Window = 0) {
    return {save, save ? "Save Image" : "Open Image", proposed, x11Window};
}

TEST(DesktopDialog, FileUrisBecomeLocalPaths) {
    const std::pair<const char*, std::optional<std::string>> cases[] = {
        {"file:///data/M42.fits", "/data/M42.fits"},
        {"file:///data/M%2042%25.fits", "/data/M 42%.fits"},
        {"file://localhost/caf%C3%a9.png", "/caf\xC3\xA9.png"},
        {"file://server/share/a.tif", std::nullopt},
        {"file:///bad%2", std::nullopt},
        {"file:///bad%zz", std::nullopt},
        {"file:///nul%00", std::nullopt},
        {"https://example.org/a.png", std::nullopt},
    };
    for (const auto& [uri, path] : cases) EXPECT_EQ(Portal_PathFromUri(uri), path) << uri;
    EXPECT_EQ(Portal_RequestPath(":1.42", "pellucida"),
              "/org/freedesktop/portal/desktop/request/1_42/pellucida");
}

// Only zenity 3.10 up to the GTK 4 rewrite is attached to the window.
TEST(DesktopDialog, ZenityAttachesOnlyWhereItWorks) {
    const std::pair<const char*, bool> cases[] = {
        {"3.44.0\n", true}, {"3.10.1", true}, {"3.8.0", false},
        {"3.91.0", false},  {"4.0.1", false}, {"", false},
    };
    const DesktopDialogRequest request = Request(false, "", 42);
    for (const auto& [version, attach] : cases) {
        const std::vector<std::string> args = Zenity_Arguments(Zenity_ParseVersion(version), request);
        EXPECT_EQ(std::count(args.begin(), args.end(), "--attach=42"), attach ? 1 : 0) << version;
        EXPECT_THAT(args, Not(Contains("--confirm-overwrite"))) << version;
    }
}

// A stub zenity in a folder of its own, which is all of PATH.
class ZenityStub : public testing::Test {
protected:
    TempDir dir;
    EnvScope path{"PATH", dir.Path().string()};
    EnvScope bus{"DBUS_SESSION_BUS_ADDRESS", kNoBus};

    // `version` answers --version (empty: fails as without a display); the
    // dialog prints `answer` and exits with `status`.
    void Install(const std::string& version, const std::string& answer, int status) {
        std::ofstream script(dir.File("zenity"));
        script << "#!/bin/sh\n"
               << "if [ \"$1\" = --version ]; then "
               << (version.empty() ? "exit 1" : "echo " + version + "; exit 0") << "; fi\n"
               << "for a in \"$@\"; do printf '%s\\n' \"$a\"; done > '" << dir.File("args") << "'\n"
               << "printf '%s' '" << answer << "'\n"
               << "exit " << status << "\n";
        script.close();
        std::filesystem::permissions(dir.File("zenity"), std::filesystem::perms::owner_all);
    }
    std::vector<std::string> Args() {
        std::ifstream in(dir.File("args"));
        std::vector<std::string> args;
        for (std::string line; std::getline(in, line);) args.push_back(line);
        return args;
    }
};

// No shell: a name with a quote, spaces and a "$" arrives as it is.
TEST_F(ZenityStub, SaveArgumentsArriveIntactAndTheAnswerIsRead) {
    Install("3.44.0", "/home/u/M42.png\n", 0);
    std::string chosen;
    EXPECT_EQ(Zenity_FileDialog(Request(true, "/data/it's M42 $HOME.tiff", 42), &chosen), Result::kChosen);
    EXPECT_EQ(chosen, "/home/u/M42.png");
    const std::vector<std::string> args = Args();
    for (const char* arg :
         {"--file-selection", "--save", "--title=Save Image", "--filename=/data/it's M42 $HOME.tiff",
          "--file-filter=TIFF | *.[tT][iI][fF] *.[tT][iI][fF][fF]", "--attach=42"})
        EXPECT_THAT(args, Contains(arg));
}

TEST_F(ZenityStub, CancelAndFailureChooseNothing) {
    for (const auto& [answer, status] : {std::pair{"", 1}, std::pair{"/data/half", 255}}) {
        Install("4.0.1", answer, status);
        std::string chosen = "before";
        EXPECT_EQ(Zenity_FileDialog(Request(false), &chosen), Result::kCanceled) << status;
        EXPECT_EQ(chosen, "before");
    }
}

// No portal on the bus: the backend's dialog is zenity's.
TEST_F(ZenityStub, BackendFallsBackToZenityWithoutAPortal) {
    Install("3.44.0", "/data/M 42.fits\n", 0);
    std::string chosen;
    EXPECT_TRUE(Sdl2_FileDialog(false, "", &chosen));
    EXPECT_EQ(chosen, "/data/M 42.fits");
}

TEST_F(ZenityStub, NeitherPortalNorZenitySaysWhatToInstall) {
    std::string chosen;
    EXPECT_EQ(Zenity_FileDialog(Request(false), &chosen), Result::kUnavailable);
    EXPECT_EXIT(
        {
            unsetenv("DISPLAY");
            unsetenv("WAYLAND_DISPLAY");
            std::exit(Sdl2_FileDialog(true, "NewFile.tiff", &chosen) ? 3 : 0);
        },
        testing::ExitedWithCode(0), "HOST MULTIPLATFORM MESSAGE: .*no desktop portal and no zenity");
}

// [SECTION] The portal, on the private bus that ctest starts for these tests

// One fake portal per test, answering one call as told.
class PortalDialog : public testing::Test {
protected:
    TempDir dir;

    void SetUp() override {
        if (!std::getenv("PELLUCIDA_PRIVATE_BUS"))
            GTEST_SKIP() << "needs a private session bus: ctest runs these under dbus-run-session "
                            "(host.portal_dialogs)";
        static const bool hasDbusmock = std::system("/usr/bin/python3 -c 'import dbusmock' 2>/dev/null") == 0;
        if (!hasDbusmock) GTEST_SKIP() << "needs python-dbusmock (Debian package python3-dbusmock)";
    }
    void TearDown() override { Finish(); }

    // Ends the fake portal, which would otherwise stay on the bus for ever.
    void Finish() {
        if (m_pid <= 0) return;
        kill(m_pid, SIGTERM);
        int status = 0;
        waitpid(std::exchange(m_pid, -1), &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM) << "the fake portal failed";
    }

    // dbusmock opens its log once it owns the portal's name.
    void Start(const std::string& answer) {
        const std::string log = dir.File("log");
        std::filesystem::remove(log);  // the last case's
        const std::string parameters =
            R"({"record": ")" + dir.File("record") + R"(", "answer": ")" + answer + R"("})";
        const char* argv[] = {"/usr/bin/python3", "-m", "dbusmock",         "--template", kFakePortal, "-l",
                              log.c_str(),        "-p", parameters.c_str(), nullptr};
        ASSERT_EQ(posix_spawn(&m_pid, argv[0], nullptr, nullptr, const_cast<char**>(argv), environ), 0);
        for (int i = 0; i < 1000 && !std::filesystem::exists(log); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        ASSERT_TRUE(std::filesystem::exists(log)) << "the fake portal did not take the name";
    }
    // The dialog through the portal. One that misses the answer would wait for
    // ever; after 10 s the fake portal is ended, which frees it.
    Result Show(const DesktopDialogRequest& request, std::string* chosen) {
        auto dialog = std::async(std::launch::async, [&] { return Portal_FileDialog(request, chosen); });
        if (dialog.wait_for(std::chrono::seconds(10)) == std::future_status::timeout) {
            ADD_FAILURE() << "no answer within 10 s";
            if (m_pid > 0) kill(m_pid, SIGKILL);
        }
        return dialog.get();
    }
    // The call the portal received, key to printed value.
    std::map<std::string, std::string> Received() {
        std::ifstream in(dir.File("record"));
        std::map<std::string, std::string> received;
        for (std::string key, value; in >> key && std::getline(in >> std::ws, value);) received[key] = value;
        return received;
    }

private:
    pid_t m_pid = -1;
};

TEST_F(PortalDialog, AnswersAndCancels) {
    struct Case {
        const char* answer;
        Result result;
        const char* chosen;
    };
    const Case cases[] = {
        {"0 file:///data/M%2042.fits", Result::kChosen, "/data/M 42.fits"},
        {"1", Result::kCanceled, "before"},
        {"2", Result::kCanceled, "before"},
        {"0 https://example.org/M42.fits", Result::kCanceled, "before"},
        {"vanish", Result::kCanceled, "before"},  // the portal left without an answer
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.answer);
        Start(c.answer);
        std::string chosen = "before";
        EXPECT_EQ(Show(Request(false), &chosen), c.result);
        EXPECT_EQ(chosen, c.chosen);
        Finish();
    }
}

TEST_F(PortalDialog, SaveProposesNameFolderAndType) {
    Start("0 file:///out/M42.png");
    std::string chosen;
    EXPECT_EQ(Show(Request(true, "/data/M42.tiff", 0x2a), &chosen), Result::kChosen);
    EXPECT_EQ(chosen, "/out/M42.png");
    const std::string tiff = R"(("TIFF", [(0, "*.[tT][iI][fF]"), (0, "*.[tT][iI][fF][fF]")]))";
    const std::map<std::string, std::string> expected = {
        {"method", "SaveFile"},
        {"parent", R"("x11:2a")"},
        {"title", R"("Save Image")"},
        {"handle_token", R"("pellucida")"},
        {"modal", "true"},
        {"filters", "[" + tiff + R"(, ("PNG", [(0, "*.[pP][nN][gG]")]), ("JPEG", [(0, "*.[jJ][pP][gG]"), )" +
                        R"((0, "*.[jJ][pP][eE][gG]"), (0, "*.[jJ][pP][sS]")])])"},
        {"current_filter", tiff},
        {"current_name", R"("M42.tiff")"},
        {"current_folder", R"(b"/data\0")"},
    };
    EXPECT_EQ(Received(), expected);
}

TEST_F(PortalDialog, OpenOffersEveryReadableTypeFromTheNamesFolder) {
    Start("1");
    std::string chosen;
    EXPECT_EQ(Show(Request(false, "/data/M42.fits"), &chosen), Result::kCanceled);
    std::map<std::string, std::string> received = Received();
    EXPECT_EQ(received["method"], "OpenFile");
    EXPECT_EQ(received["current_folder"], R"(b"/data\0")");
    EXPECT_EQ(received.count("current_name"), 0u);
    EXPECT_THAT(received["filters"], testing::StartsWith(R"([("Images", [(0, "*.[fF][iI][tT]"), )"));
    EXPECT_THAT(received["filters"], testing::EndsWith(R"(("All Files", [(0, "*")])])"));
}

TEST_F(PortalDialog, NoPortalOnTheBusIsUnavailable) {
    std::string chosen;
    EXPECT_EQ(Show(Request(false), &chosen), Result::kUnavailable);
}

}  // namespace
#endif
