// pellucida-cli end to end: every sample file read or refused as the sample
// folder says, the exact samples in .npy, conversions
// and their logs, and the exit statuses.
#include "app/Cli.h"
#include "AppRun.h"
#include "formats/File_Load.h"
#include "host/Shell_Log.h"
#include "image/Image.h"
#include "support/Files.h"
#include "support/Manifest.h"
#include "support/Sha256.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

// A folder of the test's own for outputs and the processing log.
class CliTest : public AppFolderTest {
protected:
    // The processing log as it stands, copied aside for a replay to read.
    std::string CopyOfLog() {
        fs::copy_file(dir.Path() / kShellLogFileName, Path("copy.log"), fs::copy_options::overwrite_existing);
        return Path("copy.log");
    }
};

TEST_F(CliTest, EverySampleIsReadOrRefusedAsExpected) {
    PELLUCIDA_REQUIRE_DATA(json, "expected.json");
    auto expected = Manifest_Entries("");
    ASSERT_GE(expected.size(), 90u);
    for (const ManifestEntry& e : expected) {
        SCOPED_TRACE(e.file);
        std::string path = TestData_Path(e.file);
        ASSERT_FALSE(path.empty());
        ProgramRun r = RunCli({"info", path});
        if (e.refused) {
            EXPECT_EQ(r.status, 1);
            EXPECT_NE(r.err.find(kLoadFailedText), std::string::npos);
            continue;
        }
        ASSERT_EQ(r.status, 0) << r.err;
        for (const std::string& field :
             {"reader=" + e.reader + " ",
              "width=" + std::to_string(e.width) + " height=" + std::to_string(e.height) + " ",
              std::string(e.mono ? "mono=1" : "mono=0"), std::string(e.alpha ? "alpha=1" : "alpha=0")})
            EXPECT_NE(r.out.find(field), std::string::npos) << r.out;
    }
}

// The .npy output holds the exact 30-bit samples: for a FITS sample, the
// digest the reader's own tests pin.
TEST_F(CliTest, NpyHoldsTheExactSamples) {
    PELLUCIDA_REQUIRE_DATA(json, "expected.json");
    const std::vector<ManifestEntry> fits = Manifest_Entries("FITS");
    const auto e = std::find_if(fits.begin(), fits.end(), [](const ManifestEntry& m) { return !m.refused; });
    ASSERT_NE(e, fits.end());
    ProgramRun r = RunCli({"convert", TestData_Path(e->file), Path("samples.npy")});
    ASSERT_EQ(r.status, 0) << r.err;
    std::string npy = ReadText(Path("samples.npy"));
    ASSERT_EQ(npy.compare(0, 6, "\x93NUMPY"), 0);
    size_t headerLength = uint8_t(npy[8]) | uint8_t(npy[9]) << 8;
    ASSERT_EQ((10 + headerLength) % 64, 0u);
    const std::string header = npy.substr(10, headerLength);
    EXPECT_NE(header.find("'descr': '<i8'"), std::string::npos);
    EXPECT_NE(
        header.find("'shape': (3, " + std::to_string(e->height) + ", " + std::to_string(e->width) + ")"),
        std::string::npos)
        << header;
    ASSERT_EQ(npy.size() - 10 - headerLength, size_t(3) * e->width * e->height * 8);
    EXPECT_EQ(Sha256_Hex(npy.data() + 10 + headerLength, npy.size() - 10 - headerLength).substr(0, 16),
              e->notes);
}

TEST_F(CliTest, ConvertLogsTheLoadAndTheSave) {
    PELLUCIDA_REQUIRE_DATA(in, "fits/linear/iraf_M51_B600s_int16.fits");
    fs::path out = dir.Path() / "m51.tif";
    ProgramRun r = RunCli({"convert", in, out.string()});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.err.find("Possible stacking artifacts detected"), std::string::npos);
    EXPECT_EQ(Log(), "File loaded [" + in +
                         "].\nType of Data: Linear\nImage size is 512 x 512\nFile saved [" + out.string() +
                         "].\n");
    // The TIFF written reads back at its size, through the same load flow.
    ProgramRun info = RunCli({"info", out.string()});
    EXPECT_NE(info.out.find("reader=TIFF width=512 height=512 depth=16"), std::string::npos) << info.out;
}

TEST_F(CliTest, TheWriterFollowsTheExtension) {
    PELLUCIDA_REQUIRE_DATA(in, "png/eso1723a_avm_320.png");
    const std::pair<const char*, std::string> cases[] = {{"a.JPG", "\xFF\xD8"}, {"b.jps", "\xFF\xD8"},
                                                         {"c.png", "\x89PNG"},  {"d.tif", "II*"},
                                                         {"e.fits", "II*"},     {"f", "II*"}};
    for (const auto& [name, magic] : cases) {
        ProgramRun r = RunCli({"convert", in, Path(name)});
        ASSERT_EQ(r.status, 0) << name << r.err;
        EXPECT_EQ(ReadText(Path(name)).substr(0, magic.size()), magic) << name;
    }
    // A colour image from any reader but JPEG logs the colour answer.
    EXPECT_NE(Log().find("Type of Data: Linear, was not Bayered, or was Bayered + white balanced\n"),
              std::string::npos);
}

TEST_F(CliTest, ExitStatusesAndMessages) {
    ProgramRun help = RunCli({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("convert IN OUT"), std::string::npos);

    const std::string junk = Path("junk.fits");
    std::ofstream(junk) << "not an image at all";
    ProgramRun r = RunCli({"info", junk, junk});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, junk + ": " + kLoadFailedText + "\n" + junk + ": " + kLoadFailedText + "\n");
    EXPECT_EQ(RunCli({"convert", junk, Path("x.tif")}).status, 1);
    EXPECT_FALSE(fs::exists(Path("x.tif")));
}

TEST_F(CliTest, AFailedWriteLeavesTheOldFileAndSaysSo) {
    PELLUCIDA_REQUIRE_DATA(in, "png/stellarium_m49_grey8.png");
    // A folder where the file should be: nothing can be written there.
    fs::path blocked = dir.Path() / "blocked.tif";
    fs::create_directories(blocked);
    ProgramRun r = RunCli({"convert", in, blocked.string()});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("Could not save file [" + blocked.string() + "] for write"), std::string::npos);
    EXPECT_TRUE(fs::is_directory(blocked));
    std::string log = Log();
    size_t failure = log.find("Could not save file [");
    ASSERT_NE(failure, std::string::npos);
    EXPECT_NE(log.find("File saved [" + blocked.string() + "].\n", failure), std::string::npos);
}

TEST_F(CliTest, ProcessRunsTheStepsInOrderAndLogsThem) {
    PELLUCIDA_REQUIRE_DATA(in, "fits/linear/iraf_M51_B600s_int16.fits");
    ProgramRun r =
        RunCli({"process", in, "--dataset=osc", "--bin=5000", "--rotate=900", "--crop=10:20:110:70",
                "--flip=h", "--autodev=blur=40,tone=60", "-o", Path("m51.npy")});
    ASSERT_EQ(r.status, 0) << r.err;
    // 512 binned to 256, a quarter turn keeps 256 x 256, the crop keeps both corners: 101 x 51.
    std::string npy = ReadText(Path("m51.npy"));
    EXPECT_NE(npy.find("'shape': (3, 51, 101)"), std::string::npos);
    std::string log = Log();
    // Grey data is never offered the colour-camera answer: its line is the grey one.
    EXPECT_NE(log.find("Type of Data: Linear\n"), std::string::npos) << log;
    size_t bin = log.find("--- ");
    ASSERT_NE(bin, std::string::npos);
    size_t autodev = log.find("--- AutoDev");
    ASSERT_NE(autodev, std::string::npos);
    EXPECT_LT(bin, autodev);  // blocks in the order the steps ran
    EXPECT_LT(autodev, log.find("File saved ["));
    EXPECT_NE(r.out.find("AutoDev ["), std::string::npos);  // progress lines on the console
}

// A command it does not know, too few words, and steps it cannot run end with
// status 2 before anything is read or logged.
TEST_F(CliTest, UsageErrorsEndWithStatusTwoBeforeReadingAnything) {
    const std::vector<std::string> cases[] = {{},
                                              {"frobnicate"},
                                              {"convert", "only-one"},
                                              {"info"},
                                              {"process", "in.fits", "--bin=20000", "-o", "x.tif"},
                                              {"process", "in.fits", "--rotate=3600", "-o", "x.tif"},
                                              {"process", "in.fits", "--sharpen", "-o", "x.tif"},
                                              {"process", "in.fits", "--dataset=raw", "-o", "x.tif"},
                                              {"process", "in.fits", "--autodev"},
                                              {"process", "-o", "x.tif"}};
    for (const std::vector<std::string>& args : cases)
        EXPECT_EQ(RunCli(args).status, 2) << testing::PrintToString(args);
    EXPECT_FALSE(fs::exists(dir.Path() / kShellLogFileName));
}

// A process run's own log replays to its own output: one chain through every
// module, the RoI and crop corners read at the size their step had.
TEST_F(CliTest, ReplayOfAProcessRunsLogGivesItsOutputFromTheLastLoad) {
    ASSERT_EQ(RunCli({"process", bundled, "--autodev=roi=100:80:300:200,blur=40", "--bin=7071",
                      "--rotate=123", "--crop=10:20:110:70", "--flip=v", "-o", Path("process.tif")})
                  .status,
              0);
    const ProgramRun r = RunCli({"replay", CopyOfLog(), bundled, "-o", Path("replay.tif")});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(ReadText(Path("replay.tif")), ReadText(Path("process.tif")));
    // The replay logs the same blocks again.
    const std::string log = Log();
    const size_t second = log.rfind("File loaded [");
    EXPECT_EQ(log.substr(second, log.rfind("File saved [") - second),
              log.substr(0, log.find("File saved [")));

    // Of a log of several runs (the two above), only the steps after the last
    // load are replayed.
    ASSERT_EQ(RunCli({"process", bundled, "--bin=5000", "-o", Path("second.tif")}).status, 0);
    ASSERT_EQ(RunCli({"replay", CopyOfLog(), bundled, "-o", Path("replay.tif")}).status, 0);
    EXPECT_EQ(ReadText(Path("replay.tif")), ReadText(Path("second.tif")));
}

// A log it cannot read is refused naming the line, and nothing is written.
TEST_F(CliTest, ReplayRefusesADamagedLogNamingTheLine) {
    const std::string head = "File loaded [a.tif].\nType of Data: Linear\nImage size is 960 x 720\n";
    // Each damaged log and the error it is refused with.
    const std::pair<std::string, std::string> cases[] = {
        {head + "--- Sharpen\nParameter [Radius] set to [2]\n", "line 4: unknown step \"Sharpen\""},
        {head + "--- Rotate\nParameter [Angle] set to [12.34]\n",
         "line 5: no position of \"Angle\" gives \"12.34\""},
        {head + "--- Rotate\nParameter [Scale] set to [1]\n", "line 5: Rotate has no parameter \"Scale\""},
        // 960 columns: X2 at 111 leaves 849, not 5.
        {head + "--- Crop\nParameter [X2] set to [111 pixels (-5)]\n",
         "line 5: no position of \"X2\" gives \"111 pixels (-5)\" on an image of 960 x 720"},
        {head + "Undo\n", "line 4: unreadable line \"Undo\""},
        {"Type of Data: Linear\n", "line 1: no \"File loaded [\" line"},
        {"File loaded [a.tif].\nType of Data: Linear\n", "line 1: the load has no \"Image size is\" line"},
    };
    for (const auto& [log, error] : cases) {
        SCOPED_TRACE(log);
        std::ofstream(Path("damaged.log"), std::ios::binary) << log;
        const ProgramRun r = RunCli({"replay", Path("damaged.log"), bundled, "-o", Path("out.tif")});
        EXPECT_EQ(r.status, 2);
        EXPECT_EQ(r.err, "pellucida-cli: " + Path("damaged.log") + ": " + error + "\n");
        EXPECT_FALSE(fs::exists(Path("out.tif")));
    }
}

}  // namespace
