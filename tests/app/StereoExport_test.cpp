// The stereo module's exports: the 3D photo pair's names, the pages' pictures
// (base64 JPEGs of the expected sizes, no temporary file named or left
// behind, no address outside the page), the quiet refusals with and without
// their log line, the VR canvas's geometry, and each page opened in a
// headless Chromium with no error and a picture as reviewed.
#include "app/Export.h"

#include "AppRun.h"

#include "formats/Jpeg_Read.h"
#include "support/Files.h"
#include "support/Golden.h"
#include "support/TestScene.h"
#include "ui/ToolkitFixture.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <sstream>
#include <tuple>

namespace fs = std::filesystem;

namespace {

std::vector<uint8_t> Base64Decode(std::string_view text) {
    std::vector<uint8_t> out;
    uint32_t bits = 0;
    int count = 0;
    for (char ch : text) {
        const char* alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        const char* at = ch ? std::strchr(alphabet, ch) : nullptr;
        if (!at) continue;  // padding
        bits = bits << 6 | uint32_t(at - alphabet);
        if ((count += 6) >= 8) out.push_back(uint8_t(bits >> (count -= 8)));
    }
    return out;
}

// The sizes of the JPEG pictures the page carries, in order.
std::vector<std::pair<int32_t, int32_t>> PictureSizes(const std::string& page) {
    std::vector<std::pair<int32_t, int32_t>> sizes;
    constexpr std::string_view kData = "data:image/jpeg;base64,";
    for (size_t at = page.find(kData); at != std::string::npos; at = page.find(kData, at + 1)) {
        const size_t begin = at + kData.size(), end = page.find('"', begin);
        const std::vector<uint8_t> jpeg = Base64Decode(std::string_view(page).substr(begin, end - begin));
        ImagePtr image(Jpeg_ReadMemory(jpeg.data(), jpeg.size()));
        sizes.emplace_back(image ? image->width : -1, image ? image->height : -1);
    }
    return sizes;
}

// Stands for the form's parameter block, which an export logs before its line.
constexpr const char* kBlock = "--- Stereo\n";

class StereoExportTest : public AppFolderTest {
protected:
    std::unique_ptr<Toolkit> ui;
    ImagePtr image = TestScene(320, 200), depth;
    ExportSource source;

    void SetUp() override {
        ui = ToolkitTest_Archived(800, 480, nullptr);
        if (!ui) GTEST_SKIP() << "no resources archive beside the tests";
        depth.reset(Stereo_DepthMap(image.get(), source.settings, nullptr));
        source.image = image.get();
        source.depth = depth.get();
        source.ui = ui.get();
        source.parameters = kBlock;
    }
};

}  // namespace

// The photo and the name of its depth map (none: nothing is written).
TEST_F(StereoExportTest, PhotoPairNamesItsDepthMapAfterTheImage) {
    const std::pair<const char*, const char*> cases[] = {{"scene.jpeg", "scene_depth.jpg"},
                                                         {"Scene.JPG", "Scene_depth.jpg"},
                                                         {"a.b.JpEg", "a.b_depth.jpg"},
                                                         {"scene.png", nullptr},
                                                         {"scene.jpg.html", nullptr}};
    std::string log;
    for (const auto& [name, depth] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(Export_Facebook3D(Path(name).c_str(), source), 0);
        EXPECT_EQ(fs::exists(Path(name)), depth != nullptr);
        if (!depth) continue;
        log += kBlock + ("Facebook 3D image set exported [" + Path(name) + "].\n");
        ImagePtr photo(Jpeg_Read(Path(name).c_str())), map(Jpeg_Read(Path(depth).c_str()));
        ASSERT_TRUE(photo && map);
        EXPECT_EQ(std::tuple(map->width, map->height, photo->width), std::tuple(320, 200, 320));
        EXPECT_EQ(Pixel(map.get(), 0, 144, 100), Pixel(map.get(), 2, 144, 100));  // grey
    }
    EXPECT_EQ(Log(), log);
    EXPECT_EQ(dir.Count(), 7u);  // three pairs and the log
}

TEST_F(StereoExportTest, StereoPageCarriesTheImageAndItsDepthMapAsText) {
    ASSERT_EQ(Export_StereoHtml(Path("scene.html").c_str(), source), 0);
    const std::string page = ReadText(Path("scene.html"));
    EXPECT_EQ(PictureSizes(page), (std::vector<std::pair<int32_t, int32_t>>{{320, 200}, {320, 200}}));
    for (const char* absent :
         {kExportTempName, kStereoImageMark, kStereoDepthMark, "http:", "https:", "src=\"//"})
        EXPECT_EQ(page.find(absent), std::string::npos) << absent;
    EXPECT_FALSE(fs::exists(dir.Path() / kExportTempName));  // the state folder is the program's here
    EXPECT_EQ(Log(), kBlock + ("Stereo image exported [" + Path("scene.html") + "].\n"));
}

// A wrong extension writes and logs nothing; no depth data or no template
// writes nothing and still logs the stereo page's line.
TEST_F(StereoExportTest, RefusalsAreQuietAndTheStereoPageStillLogs) {
    ExportSource noDepth = source, noArchive = source;
    noDepth.depth = nullptr;
    noArchive.ui = nullptr;
    // The file name, what is exported, whether the stereo page logs its line.
    const std::tuple<const char*, const ExportSource*, bool> cases[] = {
        {"a.jpg", &source, false}, {"b.htm", &noDepth, true}, {"c.HTML", &noArchive, true}};
    std::string log;
    for (const auto& [name, from, stereoLogs] : cases) {
        Export_StereoHtml(Path(name).c_str(), *from);
        Export_VrHtml(Path(name).c_str(), *from);
        EXPECT_FALSE(fs::exists(Path(name))) << name;
        if (stereoLogs) log += kBlock + ("Stereo image exported [" + Path(name) + "].\n");
    }
    EXPECT_EQ(Log(), log);
}

TEST_F(StereoExportTest, VrPageCarriesTheTwoCanvases) {
    ASSERT_EQ(Export_VrHtml(Path("scene.htm").c_str(), source), 0);
    const std::string page = ReadText(Path("scene.htm"));
    const int32_t s = Export_VrBaseSize(image.get());
    EXPECT_EQ(s, 320);
    EXPECT_EQ(PictureSizes(page), (std::vector<std::pair<int32_t, int32_t>>{{4 * s, 2 * s}, {4 * s, 2 * s}}));
    for (const char* absent : {kExportTempName, kVrLeftMark, kVrRightMark, "http:", "https:"})
        EXPECT_EQ(page.find(absent), std::string::npos) << absent;
    EXPECT_FALSE(fs::exists(dir.Path() / kExportTempName));
    EXPECT_EQ(Log(), kBlock + ("VR image exported [" + Path("scene.htm") + "].\n"));
    ImagePtr large(Image_Create(3000, 1000));
    EXPECT_EQ(Export_VrBaseSize(large.get()), kExportVrMaxView);
}

// s = 8: a 32 x 16 canvas, the 6 x 4 view at (13, 4), a 4 x 2 badge (its
// right half transparent) centred at x = 0 and x = 32, at the view's middle row 6.
TEST(StereoExportCanvas, ViewAndBadgeSitWhereTheDesignPutsThem) {
    ImagePtr view = MakeImage(6, 4, 30, [](int32_t x, int32_t y, int) { return 1000 + 10 * y + x; });
    ImagePtr badge = MakeImage(4, 2, 30, [](int32_t, int32_t, int) { return 800; });
    Image_AddAlpha(badge.get());
    for (int32_t i = 0; i < 8; ++i) badge->alpha[i] = i % 4 < 2 ? badge->maxValue : badge->maxValue / 2 + 1;
    const ImagePtr canvas = Export_VrCanvas(view.get(), 8, badge.get());
    ASSERT_EQ(std::tuple(canvas->width, canvas->height), std::tuple(32, 16));
    const auto at = [&](int32_t x, int32_t y) { return Pixel(canvas.get(), 1, x, y); };
    EXPECT_EQ(std::tuple(at(13, 4), at(18, 7), at(12, 4), at(19, 4), at(13, 3), at(13, 8)),
              std::tuple(1000, 1035, 0, 0, 0, 0));
    // Left edge: the badge's columns 2 and 3 (half covering) on rows 5 and 6;
    // right edge: its opaque columns 0 and 1 at x = 30 and 31.
    EXPECT_EQ(std::tuple(at(0, 5), at(1, 6), at(2, 5), at(0, 4), at(0, 7)), std::tuple(400, 400, 0, 0, 0));
    EXPECT_EQ(std::tuple(at(30, 5), at(31, 6), at(29, 5)), std::tuple(800, 800, 0));
}

namespace {

// Chromium as Debian installs it (tools/setup.sh); empty when absent.
std::string Chromium() {
    for (const char* path : {"/usr/bin/chromium", "/usr/bin/chromium-browser"})
        if (fs::exists(path)) return path;
    return {};
}

// Opens the page headless in a fresh profile with `action` (--dump-dom or
// --screenshot=FILE) after five seconds of virtual time; gives its standard
// output and the console lines of its log.
std::pair<std::string, std::string> Browse(const std::string& browser, const TempDir& dir,
                                           const std::string& page, const std::string& action) {
    const fs::path profile = dir.Path() / "profile", out = dir.Path() / "out.txt",
                   err = dir.Path() / "err.txt";
    fs::remove_all(profile);
    const std::string command =
        "cd '" + dir.Path().string() + "' && '" + browser +
        "' --headless --no-sandbox --disable-gpu --disable-quic --no-first-run "
        "--disable-background-networking "
        "--disable-component-update --disable-sync --user-data-dir='" +
        profile.string() +
        "' --enable-logging=stderr --v=0 --window-size=1000,600 --virtual-time-budget=5000 " + action +
        " 'file://" + page + "' >'" + out.string() + "' 2>'" + err.string() + "'";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    std::string console;
    std::istringstream log(ReadText(err));
    for (std::string line; std::getline(log, line);)
        if (line.find(":CONSOLE") != std::string::npos) console += line + "\n";
    return {ReadText(out), console};
}

}  // namespace

// Each page, in each of its modes, runs to the end of its set-up (the mark it
// leaves on the document) with nothing on the console, and shows the picture
// as reviewed.
TEST_F(StereoExportTest, PagesOpenInChromiumWithoutErrorsAndShowThePicture) {
    const std::string browser = Chromium();
    if (browser.empty()) GTEST_SKIP() << "no chromium (tools/setup.sh installs it)";
    image = TestScene(960, 640);
    depth.reset(Stereo_DepthMap(image.get(), source.settings, nullptr));
    source.image = image.get(), source.depth = depth.get();
    const struct {
        int (*write)(const char*, const ExportSource&);
        const char* file;
        std::vector<const char*> modes;  // chosen by the address's fragment; the first is the default
    } pages[] = {{Export_StereoHtml, "stereo.html", {"parallax", "cross", "parallel", "anaglyph", "wobble"}},
                 {Export_VrHtml, "vr.html", {"look", "headset"}}};
    for (const auto& p : pages) {
        SCOPED_TRACE(p.file);
        p.write(Path(p.file).c_str(), source);
        for (const char* mode : p.modes) {
            const std::string address = Path(p.file) + (mode == p.modes[0] ? "" : std::string("#") + mode);
            const auto [dom, console] = Browse(browser, dir, address, "--dump-dom");
            EXPECT_NE(dom.find(std::string("data-ready=\"") + mode + "\""), std::string::npos) << mode;
            EXPECT_EQ(dom.find("data-error"), std::string::npos) << mode;
            EXPECT_EQ(console, "") << mode;
        }
        const std::string shot = Path("shot.png");
        const auto [ignored, console] = Browse(browser, dir, Path(p.file), "--screenshot=" + shot);
        EXPECT_EQ(console, "");
        // A browser draws its text and scales pictures its own way: 1 % of the samples may differ.
        CompareGolden(shot, std::string("page_") + fs::path(p.file).stem().string(), 1000 * 600 * 3 / 100);
    }
}
