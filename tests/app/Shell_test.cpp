// The desktop program driven as a user drives it: the real `pellucida`
// binary on the headless backend, a script pressing its buttons and answering
// its boxes, then the files it wrote, its log and pictures of its screen.
#include "app/Shell.h"
#include "AppRun.h"
#include "app/Shell_Module.h"
#include "formats/Jpeg_Write.h"
#include "formats/Tiff_Write.h"
#include "image/History.h"
#include "support/Files.h"
#include "support/Golden.h"
#include "support/TestData.h"
#include "support/TestImages.h"
#include "support/TestScene.h"
#include "ui/ToolkitFixture.h"
#include "ui/widgets/LevelSetter.h"

#include <gtest/gtest.h>
#include <lodepng.h>

#include <cstdio>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

// Each test has a state folder of its own (slots, log) and a script runner.
class ShellTest : public AppFolderTest {
protected:
    // Script lines that open or save the file at `path` through the main form's buttons.
    static std::string Open(const std::string& path) { return "dialog " + path + "\npress BtOp\n"; }
    static std::string Save(const std::string& path) { return "dialog " + path + "\npress BtSv\n"; }
    std::string opened = Open(bundled) + "answer Linear\n";  // the sample loaded as linear data

    ProgramRun Program(const std::string& script, const std::string& size = "800x480",
                       bool pastSplash = true) {
        return RunProgram(dir.Path(), script, size, pastSplash);
    }
    // The script ran to its end and the program closed with status 0.
    testing::AssertionResult Runs(const std::string& script, const std::string& size = "800x480",
                                  bool pastSplash = true) {
        const ProgramRun run = Program(script, size, pastSplash);
        if (run.status == 0) return testing::AssertionSuccess();
        return testing::AssertionFailure() << "status " << run.status << "\n" << run.err;
    }
    // The script line that takes a picture of the screen, NAME.png in the test's folder.
    std::string Shot(const std::string& name) { return "screenshot " + Path(name + ".png") + "\n"; }
    // Each picture NAME.png against the reviewed one named PREFIX NAME SUFFIX.
    void CompareShots(std::initializer_list<std::string> names, const std::string& prefix,
                      const std::string& suffix) {
        for (const std::string& name : names) CompareGolden(Path(name + ".png"), prefix + name + suffix);
    }
    // The file the window saved (`windowFile` in the test's folder) equals what
    // `pellucida-cli process IN STEPS...` writes (to `out` there).
    void ExpectSameAsCli(const std::string& windowFile, const std::string& in, std::vector<std::string> steps,
                         const std::string& out = "cli.tif") {
        steps.insert(steps.begin(), {"process", in});
        steps.insert(steps.end(), {"-o", Path(out)});
        ASSERT_EQ(Cli(steps), 0);
        EXPECT_EQ(ReadFileBytes(Path(windowFile)), ReadFileBytes(Path(out)));
    }
    static int Cli(std::vector<std::string> args) { return RunCli(std::move(args)).status; }
};

// The lines of the log from the last "--- " block title on.
std::string LastBlock(const std::string& log) {
    const size_t at = log.rfind("--- ");
    if (at == std::string::npos) return {};
    const size_t end = log.find("File saved [", at);
    return log.substr(at, end == std::string::npos ? std::string::npos : end - at);
}

}  // namespace

// Opening each kind of file asks exactly its questions; saving gives the file
// the command line writes for the same answers, byte for byte.
TEST_F(ShellTest, OpenAnswerAndSaveGiveTheCommandLinesFile) {
    struct Case {
        std::string in;  // under the data folder, or the bundled sample
        std::vector<std::pair<std::string, std::string>> boxes;  // title, answer
        std::vector<std::string> cliAnswers;
        std::string out;
    } cases[] = {
        {"fits/writers/pixinsight_NGC3344_mono_16.fits",
         {{"Type of dataset?", "Non-linear sRGB source"},
          {"Reverse sRGB stretch?", "Attempt to reverse stretch, activate Tracking"}},
         {"--dataset=srgb", "--reverse=yes"},
         "fits.png"},
        {"", {{"Type of dataset?", "Linear"}}, {}, "tiff.tif"},
        {"",
         {{"Type of dataset?", "How can I tell if my OSC/DSLR data is linear and unstretched?"},
          {"Linear or stretched?", "I'm not sure"}},
         {},
         "unsure.tif"},
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
        ASSERT_TRUE(Runs(script + Save(Path(c.out))));
        ExpectSameAsCli(c.out, in, c.cliAnswers, "cli-" + c.out);
    }
}

TEST(ShellTexts, TitleAndZoomLabel) {
    EXPECT_EQ(Shell_ZoomText(37, true), "37% (fit)");
    EXPECT_EQ(Shell_ZoomText(200, false), "200%");
    EXPECT_EQ(Shell_TitleText("", nullptr), "No Image");
    ImagePtr image(Image_Create(3, 2));
    EXPECT_EQ(Shell_TitleText("/data/M 31.fits", image.get()), "M 31.fits (3x2)");
}

// Reviewed pictures of the splash, the main form empty and with a real image,
// and the dataset question, on a small, a full-HD and a 4K screen; on the
// first two the module forms too: Bin after a preset, Rotate with its
// levelling grid, AutoDev's preview without and with a RoI, and Crop's
// dragged rectangle over the dimmed preview.
TEST_F(ShellTest, ScreensMatchTheirReviewedPictures) {
    const std::string modules =
        "press BSBi\npress Bt71\nidle\n" + Shot("bin") + "press BtCl\npress BtRt\nset LvS1 100\nidle\n" +
        Shot("rotate") + "press BtCl\npress BtAD\nidle\n" + Shot("autodev") +
        "drag View 40 30 160 120\nidle\n" + Shot("autodev_roi") +
        "press BtCl\npress BSCr\ndrag View 100 80 300 200\n" + Shot("crop") + "press BtKp\n";
    for (const std::string size : {"800x480", "1920x1080", "3840x2160"}) {
        const bool withModules = size != "3840x2160";
        ASSERT_TRUE(Runs("wait 4\n" + Shot("splash") + "wait 20\n" + Shot("empty") + Open(bundled) +
                             Shot("question") + "answer Linear\nidle\n" + Shot("image") +
                             (withModules ? modules : ""),
                         size, false));
        CompareShots({"splash", "empty", "question", "image"}, "shell_", "_" + size);
        if (withModules) CompareShots({"bin", "rotate", "autodev", "autodev_roi", "crop"}, "", "_" + size);
    }
}

// Every box of the open and save flows and the close question, each as it
// first comes up, and what their answers do: the overwrite question's Cancel
// leaves the file alone, a failed write is logged and the program goes on, a
// cancelled close keeps it running (About still answers; the console had the
// banner). The files that raise them are made here: a colour picture with
// transparent pixels and a black stacking border, a grey one, a JPEG.
TEST_F(ShellTest, BoxesOfOpenSaveAndCloseLookAndActAsReviewed) {
    constexpr unsigned kW = 96, kH = 64;
    const ImagePtr jpeg = MakeImage(kW, kH, 8, [](int32_t x, int32_t y, int c) {
        const int64_t v = 20 + (x * 3 + y * 5) % 200;
        return c == 0 ? v : c == 1 ? v / 2 : 255 - v;
    });
    std::vector<uint8_t> rgba, grey;
    for (unsigned y = 0; y < kH; ++y)
        for (unsigned x = 0; x < kW; ++x) {
            // Black at x < 4: what a stack of shifted frames leaves.
            for (int c = 0; c < 3; ++c) rgba.push_back(x < 4 ? 0 : uint8_t(Pixel(jpeg.get(), c, x, y)));
            rgba.push_back(x > 80 && y > 50 ? 0 : 255);
            grey.push_back(uint8_t(Pixel(jpeg.get(), 0, x, y)));
        }
    ASSERT_EQ(lodepng::encode(Path("gaps.png"), rgba, kW, kH, LCT_RGBA, 8), 0u);
    ASSERT_EQ(lodepng::encode(Path("grey.png"), grey, kW, kH, LCT_GREY, 8), 0u);
    ASSERT_EQ(Jpeg_Write(jpeg.get(), Path("photo.jpg").c_str()), 1);
    WriteFileBytes(Path("notes.txt"), {'x'});
    WriteFileBytes(Path("broken.fits"), {'S', 'I', 'M', 'P'});
    WriteFileBytes(Path("old.tif"), {1, 2, 3});

    const std::vector<std::pair<std::string, std::string>> steps = {
        // what brings the box up (the dialog's answer first), its picture's name, the answer
        {Open(Path("notes.txt")) + "dialog cancel\nexpect-box Unknown File Type\n", "unknown_type"},
        {"answer OK\n" + Open(Path("broken.fits")) + "expect-box Failed\n", "load_failed"},
        {"answer Why only these formats?\nexpect-box Supported formats\n", "why_formats"},
        {"answer OK\n" + Open(Path("gaps.png")), "data_gaps"},
        {"answer Interpolate\n", "artefacts"},
        {"answer OK\n", "dataset_colour"},
        {"answer How can I tell if my OSC/DSLR data is linear and unstretched?\n", "osc_help"},
        {"answer OK\nanswer Non-linear sRGB source\n", "reverse_srgb"},
        {"answer Don't activate Tracking\n" + Open(Path("grey.png")), "dataset_grey"},
        {"answer Linear\n" + Open(Path("photo.jpg")), "reverse_stretch"},
        {"answer Don't activate tracking\n" + Save(Path("x.txt")) +
             "dialog cancel\nexpect-box Unsupported File Type\n",
         "unsupported_type"},
        {"answer OK\n" + Save(Path("old.tif")) + "expect-box File already exists\n", "overwrite"},
        {"answer Cancel\n" + Save("missing/folder.tif") + "expect-box Failed\n", "save_failed"},
        {"answer OK\nclose\nexpect-box Close Pellucida\n", "close"},
    };
    std::string script;
    for (const auto& [before, name] : steps) script += before + Shot(name);
    // After the cancelled close: no box came for a new file, so the open
    // dialog (cancelled) is reachable; then a file dropped on the window.
    const ProgramRun run =
        Program(script + "answer Cancel\n" + Save(Path("new.tif")) +
                    "press BtOp\npress BtAb\nexpect-box About Pellucida\nanswer OK\ndrop " + bundled +
                    "\nexpect-box Type of dataset?\nanswer Linear\n",
                "1280x720");
    ASSERT_EQ(run.status, 0) << run.err;
    for (const auto& [before, name] : steps) CompareGolden(Path(name + ".png"), "box_" + name);
    EXPECT_EQ(ReadFileBytes(Path("old.tif")), (std::vector<uint8_t>{1, 2, 3}));
    EXPECT_TRUE(fs::exists(Path("new.tif")));
    const std::string log = Log();
    EXPECT_NE(log.find("] for write - check permissions for folder"), std::string::npos);
    EXPECT_NE(log.find("Image size is 960 x 720\n"), std::string::npos);
    EXPECT_NE(run.out.find("\n-----------------------------------------------------------\nPellucida "),
              std::string::npos);
}

// A script line that fails ends the program with status 3, naming the line
// and why: Save greyed out with no image, Restore with no history, "No RoI"
// in AutoDev with no RoI.
TEST_F(ShellTest, AFailingScriptLineEndsTheProgramNamingIt) {
    const std::pair<std::string, std::string> cases[] = {
        {"press BtSv\n", "line 2 (press): BtSv is greyed out"},
        {"press BTrU\n", "BTrU is greyed out"},
        {opened + "press BtAD\nidle\npress BtAl\n", "BtAl is greyed out"}};
    for (const auto& [script, error] : cases) {
        const ProgramRun run = Program(script);
        EXPECT_EQ(run.status, 3);
        EXPECT_NE(run.err.find(error), std::string::npos) << run.err;
    }
}

// The history: a run that ends without closing (a crash after the mirror) is
// offered back at the next start, and its state saves as the mirror saved in
// a run that closed normally; that normal run is never offered. Discard drops
// what a dead run left.
TEST_F(ShellTest, ARunThatEndedWithoutClosingIsOfferedBack) {
    const std::string mirror = opened + "press BtMH\n";
    ASSERT_TRUE(Runs(mirror + Save(Path("mirrored.tif"))));
    EXPECT_EQ(Program(mirror + "crash\n").status, 70);
    ASSERT_TRUE(Runs("expect-box Restore last session?\nanswer Restore\n" + Save(Path("recovered.tif"))));
    EXPECT_EQ(ReadFileBytes(Path("recovered.tif")), ReadFileBytes(Path("mirrored.tif")));

    const size_t states = History_List(Path("history/")).size();
    EXPECT_EQ(states, 4u);  // two runs that mirrored after loading
    EXPECT_EQ(Program(mirror + "crash\n").status, 70);
    ASSERT_TRUE(Runs("expect-box Restore last session?\nanswer Discard\n"));
    EXPECT_EQ(History_List(Path("history/")).size(), states);
}

// Undo restores the state before the mirror, a second press redoes it, and
// the console says which. Restore brings the loaded state back as a new step
// that Undo takes back; every kept state is in the history under what made it.
TEST_F(ShellTest, UndoRedoAndRestoreOfAnEarlierState) {
    const ProgramRun run =
        Program(opened + Save(Path("loaded.tif")) + "press BtMH\n" + Save(Path("mirrored.tif")) +
                "press BtUn\n" + Save(Path("undone.tif")) + "press BtUn\n" + Save(Path("redone.tif")) +
                "press BTrU\nselect RsLs 1\npress RsOk\n" + Save(Path("restored.tif")) + "press BtUn\n" +
                Save(Path("unrestored.tif")));
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("Undo\nRedo\n"), std::string::npos);
    EXPECT_NE(ReadFileBytes(Path("loaded.tif")), ReadFileBytes(Path("mirrored.tif")));
    EXPECT_EQ(ReadFileBytes(Path("loaded.tif")), ReadFileBytes(Path("undone.tif")));
    EXPECT_EQ(ReadFileBytes(Path("mirrored.tif")), ReadFileBytes(Path("redone.tif")));
    EXPECT_EQ(ReadFileBytes(Path("restored.tif")), ReadFileBytes(Path("loaded.tif")));
    EXPECT_EQ(ReadFileBytes(Path("unrestored.tif")), ReadFileBytes(Path("mirrored.tif")));
    std::vector<std::string> captions;
    for (const HistoryEntry& entry : History_List(Path("history/"))) captions.push_back(entry.state.caption);
    EXPECT_EQ(captions,
              (std::vector<std::string>{"Restored: File loaded: M94-Seestar-stack.tif", "Mirror left-right",
                                        "File loaded: M94-Seestar-stack.tif"}));
}

// The Restore form's reviewed picture, over states of fixed times and sizes.
TEST_F(ShellTest, RestoreFormMatchesItsReviewedPicture) {
    fs::create_directories(Path("history"));
    const struct {
        const char* caption;
        int32_t width, height;
        bool mask;
    } states[] = {{"File loaded: M94-Seestar-stack.tif", 960, 720, false},
                  {"AutoDev", 960, 720, false},
                  {"Crop", 812, 604, false},
                  {"Bin", 406, 302, true},
                  {"Restored: Crop", 812, 604, false}};
    int64_t time = 1767225600000;  // 2026-01-01 00:00 UTC
    int number = 1;
    for (const auto& s : states) {
        ImagePtr image(Image_CreateCleared(s.width, s.height));
        ImagePtr mask(s.mask ? Image_CreateCleared(s.width, s.height) : nullptr);
        const HistoryState state{.caption = s.caption, .name = bundled, .timeMs = time += 97000};
        const std::string path =
            Path("history/0000000000001-00000001_00000" + std::to_string(number++) + ".pst");
        ASSERT_TRUE(History_WriteFile(path, state, image.get(), mask.get()));
    }
    EnvScope utc("TZ", "UTC");
    ASSERT_TRUE(Runs("press BTrU\n" + Shot("restore"), "1920x1080"));
    CompareGolden(Path("restore.png"), "restore_1920x1080");
}

// AutoDev kept in the window gives the command line's file and parameter
// block; it is one undoable step (Undo gives the image before it). A large
// image is previewed on a binned copy first: what is kept is still exact.
TEST_F(ShellTest, AutoDevKeptInTheWindowEqualsTheCommandLine) {
    const ImagePtr large = MakeImage(2000, 1500, 16, [](int32_t x, int32_t y, int c) {
        const int64_t sky = 3000 + x / 4 + ((x * 7919 + y * 104729) % 997);
        const int64_t d = int64_t(x - 1000) * (x - 1000) + int64_t(y - 750) * (y - 750);
        return sky + (40000 - 10000 * c) * 900 / (900 + d);  // a glow, redder at its centre
    });
    ASSERT_EQ(Tiff_Write(large.get(), Path("large.tif").c_str()), 1);
    for (const std::string& in : {bundled, Path("large.tif")}) {
        SCOPED_TRACE(in);
        for (const char* name : {"before.tif", "window.tif", "undone.tif", "cli.tif"}) fs::remove(Path(name));
        ASSERT_TRUE(Runs(Open(in) + "answer Linear\n" + Save(Path("before.tif")) +
                         "press BtAD\nset LvS1 200\nidle\npress BtKp\n" + Save(Path("window.tif")) +
                         "press BtUn\n" + Save(Path("undone.tif"))));
        const std::string window = LastBlock(Log());
        ExpectSameAsCli("window.tif", in, {"--autodev=blur=200"});
        EXPECT_EQ(ReadFileBytes(Path("undone.tif")), ReadFileBytes(Path("before.tif")));
        EXPECT_EQ(window, LastBlock(Log()));
        EXPECT_NE(window.find("Parameter [Detail Blur] set to [21.0 pixels]\n"), std::string::npos) << window;
    }
}

// A second global stretch on tracked data asks first; "Redo global stretch"
// starts again from the linear data, changed as the image was since (a
// mirror; a crop, which cuts the tracked data too): the same as those steps
// and the stretch in one batch.
TEST_F(ShellTest, RedoGlobalStretchStartsFromTheTrackedLinearData) {
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"press BtMH\n", {"--flip=h", "--autodev"}},
        {"press BSCr\nset LvS1 100\nset LvS4 600\npress BtKp\n", {"--crop=100:0:959:600", "--autodev"}}};
    for (const auto& [since, cli] : cases) {
        SCOPED_TRACE(since);
        fs::remove(Path("redo.tif"));
        ASSERT_TRUE(Runs(opened + "press BtAD\nidle\npress BtKp\n" + since +
                         "press BtAD\nexpect-box Previously Stretched\nanswer Redo global stretch\nidle\n"
                         "press BtKp\n" +
                         Save(Path("redo.tif"))));
        ExpectSameAsCli("redo.tif", bundled, cli);
    }
}

// Bin with a preset, Rotate with a set angle and Crop with set corners, each
// kept, give the command line's file; Undo takes the crop back, to the file
// without it.
TEST_F(ShellTest, BinRotateAndCropKeptInTheWindowEqualTheCommandLine) {
    ASSERT_TRUE(Runs(opened + "press BSBi\npress Bt71\nidle\npress BtKp\npress BtRt\nset LvS1 100\nidle\n" +
                         "press BtKp\npress BSCr\nset LvS3 700\nset LvS4 560\nset LvS1 60\nset LvS2 50\n" +
                         "press BtKp\n" + Save(Path("window.tif")) + "press BtUn\n" +
                         Save(Path("undone.tif")),
                     "1280x720"));
    ExpectSameAsCli("window.tif", bundled, {"--bin=7071", "--rotate=100", "--crop=60:50:700:560"});
    ExpectSameAsCli("undone.tif", bundled, {"--bin=7071", "--rotate=100"}, "uncropped.tif");
}

// A picture whose stacking border the load found: Crop's first entry starts
// from the box inside it, so Keep alone cuts the border off.
TEST_F(ShellTest, CropStartsFromTheBoxInsideAStackingBorder) {
    PELLUCIDA_REQUIRE_DATA(in, "png/stellarium_ic410_rgba8.png");  // box 0,1,512,512
    ASSERT_TRUE(Runs(Open(in) +
                     "expect-box Possible stacking artifacts detected\nanswer OK\n"
                     "expect-box Type of dataset?\nanswer Linear\npress BSCr\npress BtKp\n" +
                     Save(Path("window.tif"))));
    ExpectSameAsCli("window.tif", in, {"--crop=0:1:511:511"});
}

// What the window kept (AutoDev with a RoI, a mirror of the main form) is what
// a replay of its log gives another run on the same file, byte for byte.
TEST_F(ShellTest, ReplayOfTheWindowsLogGivesTheWindowsFile) {
    ASSERT_TRUE(Runs(opened + "press BtAD\nset LvS1 200\n" +
                     "drag View 100 80 300 200\nidle\npress BtKp\npress BtMH\n" + Save(Path("window.tif"))));
    const std::string log = Log();
    ASSERT_NE(log.find("--- Mirror left-right\nFile saved ["), std::string::npos) << log;
    fs::copy_file(Path("Pellucida.log"), Path("window.log"));
    ASSERT_EQ(Cli({"replay", Path("window.log"), bundled, "-o", Path("replay.tif")}), 0);
    EXPECT_EQ(ReadFileBytes(Path("replay.tif")), ReadFileBytes(Path("window.tif")));
}

// A rectangle dragged either way is the same, as AutoDev's RoI (set twice,
// "No RoI" between) and as Crop's corners.
TEST_F(ShellTest, ADragInEitherDirectionGivesTheSameRoIAndCrop) {
    std::string blocks[2];
    const char* drags[2] = {"drag View 100 80 300 200\n", "drag View 300 200 100 80\n"};
    for (int i = 0; i < 2; ++i) {
        fs::remove(Path("Pellucida.log"));
        ASSERT_TRUE(Runs(opened + "press BtAD\n" + drags[i] + "idle\npress BtAl\n" + drags[i] +
                         "idle\npress BtKp\npress BSCr\n" + drags[i] + "press BtKp\n"));
        const std::string log = Log();
        blocks[i] = log.substr(log.find("--- "));
    }
    EXPECT_EQ(blocks[0], blocks[1]);
    EXPECT_NE(blocks[0].find("--- Crop"), std::string::npos) << blocks[0];
    EXPECT_EQ(blocks[0].find("RoI X1] set to [0 pixels]"), std::string::npos) << blocks[0];
    EXPECT_EQ(blocks[0].find("Parameter [X1] set to [0 pixels]"), std::string::npos) << blocks[0];
}

// The parameter block lists the setters a form has, in identifier order, each
// with its caption and value text: "LvS0" and "LvS2" without "LvS1" are two lines.
TEST_F(ShellTest, ParameterBlockListsTheSettersTheFormHas) {
    std::unique_ptr<Toolkit> tk = ToolkitTest_Screen(640, 480);
    Widget* form =
        ToolkitTest_Load(tk.get(),
                         "<FORM ID=\"TstM\"><LABEL ID=\"LbTi\" Text=\"Test\"></LABEL><LEVELSETTER "
                         "ID=\"LvS2\"></LEVELSETTER><LEVELSETTER ID=\"LvS0\"></LEVELSETTER></FORM>");
    ASSERT_NE(form, nullptr);
    Widget* zero = Widget_FindById(form, Widget_PackId("LvS0"));
    LevelSetter_Setup(tk.get(), zero, 10, 3);
    LevelSetter_SetCaption(tk.get(), zero, "Zero");
    Shell_LogParameters(nullptr, form);
    EXPECT_EQ(Log(), "--- Test\nParameter [Zero] set to [3]\nParameter [] set to [0]\n");
}

// The stereo form: its three previews as reviewed (and the depth map of linear
// data), and its three exports each through the save dialog (a cancelled
// dialog and a wrong extension write nothing and ask nothing). Each export
// logs the form's parameter block before its own line, and a replay of that
// log passes over both.
TEST_F(ShellTest, StereoFormPreviewsAndExports) {
    ImagePtr scene = TestScene(960, 640);
    ASSERT_EQ(Jpeg_Write(scene.get(), Path("scene_in.jpg").c_str()), 1);
    ASSERT_TRUE(Runs(
        Open(Path("scene_in.jpg")) + "answer OK\nanswer Don't activate tracking\npress BStr\nidle\n" +
            Shot("depth") + "press BtPP\nidle\n" + Shot("pair") + "press BtPA\nidle\n" + Shot("anaglyph") +
            "dialog cancel\npress BtEH\ndialog " + Path("notes.txt") +
            "\npress BtEF\nset LvS1 80\nidle\ndialog " + Path("scene.html") + "\npress BtEH\ndialog " +
            Path("scene_vr.htm") + "\npress BtEV\ndialog " + Path("scene.jpeg") +
            "\npress BtEF\npress BtCl\n" + opened + "press BStr\nidle\n" + Shot("linear") + "press BtCl\n",
        "1280x720"));
    // Linear data: the depth map is shown as it is, not through the screen stretch.
    CompareShots({"depth", "pair", "anaglyph", "linear"}, "stereo_", "_1280x720");
    for (const char* written : {"scene.html", "scene_vr.htm", "scene.jpeg", "scene_depth.jpg"})
        EXPECT_TRUE(fs::exists(Path(written))) << written;
    EXPECT_FALSE(fs::exists(Path("notes.txt")));
    EXPECT_FALSE(fs::exists(Path("_QVTMP.jpg")));
    const std::string log = Log();
    const std::string block =
        "--- Stereo\nParameter [Depth Strength] set to [80 %]\n"
        "Parameter [Star Stand-Out] set to [60 %]\n";
    EXPECT_NE(log.find(block + "Stereo image exported [" + Path("scene.html") + "].\n" + block +
                       "VR image exported [" + Path("scene_vr.htm") + "].\n" + block +
                       "Facebook 3D image set exported [" + Path("scene.jpeg") + "].\n"),
              std::string::npos)
        << log;
    size_t blocks = 0;
    for (size_t at = log.find("--- Stereo"); at != std::string::npos; at = log.find("--- Stereo", at + 1))
        ++blocks;
    EXPECT_EQ(blocks, 3u);  // none for the cancelled dialog and the wrong extension
    fs::copy_file(Path("Pellucida.log"), Path("stereo.log"));
    EXPECT_EQ(Cli({"replay", Path("stereo.log"), Path("scene_in.jpg"), "-o", Path("replay.tif")}), 0);
}
