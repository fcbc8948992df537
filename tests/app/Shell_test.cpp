// The desktop program driven as a user drives it: the real `pellucida`
// binary on the headless backend, a script pressing its buttons and answering
// its boxes, then the files it wrote, its log and pictures of its screen.
#include "app/Shell.h"
#include "app/Cli.h"
#include "support/Files.h"
#include "support/TestData.h"

#include <gtest/gtest.h>
#include <lodepng.h>

#include <sys/wait.h>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

struct ProgramRun {
    int status = -1;
    std::string out, err;
};

std::string ReadText(const fs::path& path) {
    const std::vector<uint8_t> bytes = ReadFileBytes(path);
    return std::string(bytes.begin(), bytes.end());
}

// Each test has a state folder of its own (slots, log) and a script runner.
class ShellTest : public testing::Test {
protected:
    TempDir dir;
    std::string bundled = std::string(PELLUCIDA_TEST_SOURCE_DIR) + "/../samples/M94-Seestar-stack.tif";

    void SetUp() override { SetEnv("PELLUCIDA_STATE_DIR", dir.Path().string()); }
    void TearDown() override { UnsetEnv("PELLUCIDA_STATE_DIR"); }

    // The splash passes (unless the script watches it), the script runs, and
    // the program is closed as a user would close it.
    ProgramRun Program(const std::string& script, const std::string& size = "800x480",
                       bool pastSplash = true) {
        const fs::path file = dir.Path() / "script.txt";
        std::ofstream(file) << (pastSplash ? "wait 20\n" : "") << script << "close\nanswer Close\n";
        const fs::path out = dir.Path() / "out.txt", err = dir.Path() / "err.txt";
        const std::string command = "PELLUCIDA_HEADLESS_SIZE=" + size +
                                    " '" PELLUCIDA_PROGRAM "' --host=headless '--script=" + file.string() +
                                    "' >'" + out.string() + "' 2>'" + err.string() + "'";
        ProgramRun run;
        const int raw = std::system(command.c_str());
        run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        run.out = ReadText(out);
        run.err = ReadText(err);
        return run;
    }
    std::string Path(const char* name) { return (dir.Path() / name).string(); }
};

std::string Open(const std::string& path) {
    return "dialog " + path + "\npress BtOp\n";
}
std::string Save(const std::string& path) {
    return "dialog " + path + "\npress BtSv\n";
}

// A screenshot against its reviewed picture in tests/golden/NAME/expected.png;
// PELLUCIDA_REBASELINE=1 writes the picture instead.
void CompareGolden(const std::string& actual, const std::string& name) {
    const fs::path golden = fs::path(PELLUCIDA_TEST_SOURCE_DIR) / "golden" / name / "expected.png";
    if (const char* r = std::getenv("PELLUCIDA_REBASELINE"); r && std::string(r) == "1") {
        fs::create_directories(golden.parent_path());
        fs::copy_file(actual, golden, fs::copy_options::overwrite_existing);
        return;
    }
    std::vector<uint8_t> a, e;
    unsigned aw = 0, ah = 0, ew = 0, eh = 0;
    ASSERT_EQ(lodepng::decode(a, aw, ah, actual, LCT_RGB, 8), 0u) << actual;
    ASSERT_EQ(lodepng::decode(e, ew, eh, golden.string(), LCT_RGB, 8), 0u) << golden;
    ASSERT_EQ(aw, ew);
    ASSERT_EQ(ah, eh);
    size_t bad = 0;
    for (size_t i = 0; i < a.size(); ++i) bad += std::abs(int(a[i]) - int(e[i])) > 8;
    EXPECT_EQ(bad, 0u) << name << ": the screen differs from the reviewed picture (" << actual << ")";
}

}  // namespace

// Opening each kind of file asks exactly its questions; saving gives the file
// the command line writes for the same answers, byte for byte.
TEST_F(ShellTest, OpenAnswerAndSaveGiveTheCommandLinesFile) {
    struct Case {
        std::string in;  // under the data folder, or the bundled sample
        std::vector<std::pair<std::string, std::string>> boxes;  // title, answer
        std::vector<std::string> cliAnswers;
        const char* out;
    } cases[] = {
        {"fits/writers/pixinsight_NGC3344_mono_16.fits",
         {{"Type of dataset?", "Non-linear sRGB source"},
          {"Reverse sRGB stretch?", "Attempt to reverse stretch, activate Tracking"}},
         {"--dataset=srgb", "--reverse=yes"},
         "fits.png"},
        {"", {{"Type of dataset?", "Linear"}}, {}, "tiff.tif"},
        {"png/stellarium_ic410_rgba8.png",
         {{"Possible stacking artifacts detected", "OK"},
          {"Type of dataset?", "Linear, from OSC/DSLR with Bayer matrix and not white balanced"}},
         {"--dataset=osc"},
         "png.jpg"},
        {"jpeg/stellarsolver_pleiades.jpg",
         {{"Reverse stretch?", "Don't activate tracking"}},
         {},
         "jpeg.tiff"},
    };
    for (const Case& c : cases) {
        const std::string in = c.in.empty() ? bundled : TestData_Path(c.in);
        if (in.empty()) {
            std::printf("skipped %s: sample data not found\n", c.in.c_str());
            continue;
        }
        SCOPED_TRACE(c.in);
        std::string script = Open(in);
        for (const auto& [title, answer] : c.boxes)
            script += "expect-box " + title + "\nanswer " + answer + "\n";
        const ProgramRun run = Program(script + Save(Path(c.out)));
        ASSERT_EQ(run.status, 0) << run.err;

        const std::string cliOut = Path((std::string("cli-") + c.out).c_str());
        std::vector<std::string> args = {"pellucida-cli", "process", in, "-o", cliOut};
        args.insert(args.end(), c.cliAnswers.begin(), c.cliAnswers.end());
        std::vector<char*> argv;
        for (auto& a : args) argv.push_back(a.data());
        testing::internal::CaptureStdout();
        ASSERT_EQ(Cli_Run(int(argv.size()), argv.data()), 0);
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(ReadFileBytes(Path(c.out)), ReadFileBytes(cliOut));
    }
}

TEST_F(ShellTest, CancellingTheCloseQuestionKeepsTheProgramRunning) {
    const ProgramRun run = Program(
        "close\nexpect-box Close Pellucida\nanswer Cancel\npress BtAb\nexpect-box About Pellucida\nanswer "
        "OK\n");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("\n-----------------------------------------------------------\nPellucida "),
              std::string::npos);
}

// Undo restores the state before the mirror, a second press redoes it; the
// caption alternates and the console says which.
TEST_F(ShellTest, UndoAndRedoSwapTheLastTwoStates) {
    const ProgramRun run = Program(Open(bundled) + "answer Linear\n" + Save(Path("a.tif")) + "press BtMH\n" +
                                   Save(Path("mirrored.tif")) + "press BtUn\n" + Save(Path("undone.tif")) +
                                   "press BtUn\n" + Save(Path("redone.tif")));
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("Undo\nRedo\n"), std::string::npos);
    EXPECT_NE(ReadFileBytes(Path("a.tif")), ReadFileBytes(Path("mirrored.tif")));
    EXPECT_EQ(ReadFileBytes(Path("a.tif")), ReadFileBytes(Path("undone.tif")));
    EXPECT_EQ(ReadFileBytes(Path("mirrored.tif")), ReadFileBytes(Path("redone.tif")));
}

// The overwrite question comes only for a file that exists, and its Cancel
// leaves the file alone; a failed write says so and the program goes on.
TEST_F(ShellTest, SaveAsksBeforeOverwritingAndReportsFailures) {
    WriteFileBytes(Path("old.tif"), {1, 2, 3});
    const ProgramRun run =
        Program(Open(bundled) + "answer Linear\n" + Save(Path("old.tif")) +
                "expect-box File already exists\nanswer Cancel\n" + Save(Path("new.tif")) +
                "press BtOp\n" +  // no box came: the open dialog (cancelled) is reachable
                Save(Path("missing/folder.tif")) + "expect-box Failed\nanswer OK\n" + Save(Path("x.txt")) +
                "expect-box Unsupported File Type\ndialog cancel\nanswer OK\n");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(ReadFileBytes(Path("old.tif")), (std::vector<uint8_t>{1, 2, 3}));
    EXPECT_TRUE(fs::exists(Path("new.tif")));
    const std::string log = ReadText(dir.Path() / "Pellucida.log");
    EXPECT_NE(log.find("] for write - check permissions for folder"), std::string::npos);
}

TEST_F(ShellTest, OpenRefusesUnknownNamesAndUnreadableFiles) {
    WriteFileBytes(Path("notes.txt"), {'x'});
    WriteFileBytes(Path("broken.fits"), {'S', 'I', 'M', 'P'});
    const ProgramRun run =
        Program(Open(Path("notes.txt")) + "expect-box Unknown File Type\ndialog cancel\nanswer OK\n" +
                Open(Path("broken.fits")) + "expect-box Failed\nanswer Why only these formats?\n" +
                "expect-box Supported formats\nanswer OK\ndrop " + bundled +
                "\nexpect-box Type of dataset?\nanswer Linear\n");
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(ReadText(dir.Path() / "Pellucida.log").find("Image size is 960 x 720\n"), std::string::npos);
}

TEST_F(ShellTest, AFailingScriptLineEndsTheProgramNamingIt) {
    const ProgramRun run = Program("press BtSv\n");  // greyed out: no image yet
    EXPECT_EQ(run.status, 3);
    EXPECT_NE(run.err.find("line 2 (press): BtSv is greyed out"), std::string::npos) << run.err;
}

TEST(ShellTexts, TitleAndZoomLabel) {
    EXPECT_EQ(Shell_ZoomText(37, true), "37% (fit)");
    EXPECT_EQ(Shell_ZoomText(200, false), "200%");
    EXPECT_EQ(Shell_TitleText("", nullptr), "No Image");
    ImagePtr image(Image_Create(3, 2));
    EXPECT_EQ(Shell_TitleText("/data/M 31.fits", image.get()), "M 31.fits (3x2)");
}

// Reviewed pictures of the splash, the main form empty and with a real image,
// and the dataset question, on a small and a large screen.
TEST_F(ShellTest, ScreensMatchTheirReviewedPictures) {
    const std::string shots = dir.Path().string();
    for (const std::string size : {"800x480", "1920x1080"}) {
        const ProgramRun run =
            Program("wait 4\nscreenshot " + shots + "/splash.png\nwait 20\nscreenshot " + shots +
                        "/empty.png\n" + Open(bundled) + "screenshot " + shots +
                        "/question.png\nanswer Linear\nidle\nscreenshot " + shots + "/image.png\n",
                    size, false);
        ASSERT_EQ(run.status, 0) << run.err;
        for (const char* shot : {"splash", "empty", "question", "image"})
            CompareGolden(shots + "/" + shot + ".png", std::string("shell_") + shot + "_" + size);
    }
}
