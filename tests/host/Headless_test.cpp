// The headless backend's scripts and screen dumps, and the program end to end
// on them.
#include "HostFixture.h"
#include "host/headless/Headless_Script.h"
#include "support/Files.h"

#include <lodepng.h>

#include <fstream>
#include <tuple>

namespace {

TEST(HeadlessScript, ParsesEveryCommand) {
    HeadlessScript script;
    std::string error;
    ASSERT_TRUE(HeadlessScript_Parse(
        "# comment\n\ntick 3\nchar A\nchar code 233\nkey escape\nmove 1 2\npress 3 4\nrelease 5 6\n"
        "click 7 8\nresize 640 400\npaint\nwait 2\nscreenshot out dir/a b.png  \ndialog cancel\n"
        "dialog /x/y.fits\nclose\n",
        &script, &error))
        << error;
    ASSERT_EQ(script.commands.size(), 15u);
    const auto& c = script.commands;
    EXPECT_EQ(c[0].kind, HeadlessCommand::kTick);
    EXPECT_EQ((std::vector<uint32_t>{c[0].a, c[1].a, c[2].a, c[3].a, c[8].a}),
              (std::vector<uint32_t>{3, 'A', 233, 27, 640}));
    EXPECT_EQ(c[11].text, "out dir/a b.png");
    EXPECT_TRUE(c[12].cancel);
    EXPECT_EQ(c[13].text, "/x/y.fits");
}

TEST(HeadlessScript, RefusesWhatItDoesNotUnderstand) {
    HeadlessScript script;
    std::string error;
    for (const char* bad : {"jump 1", "move 1", "move 1 -2", "tick 0", "char AB", "key f1", "close now",
                            "screenshot", "resize 99999999999 1"}) {
        EXPECT_FALSE(HeadlessScript_Parse(std::string("tick\n") + bad + "\n", &script, &error)) << bad;
        EXPECT_NE(error.find("line 2"), std::string::npos) << error;
    }
}

class HeadlessRun : public HostTest {
protected:
    TempDir dir;
};

// A paint request presents the framebuffer, as does a blit naming no driver;
// one naming another driver is ignored. The screen dump is what was presented.
TEST_F(HeadlessRun, PaintPresentsTheFramebufferAndTheScreenDumpIsWhatWasPresented) {
    Settle();
    uint32_t* pixels = nullptr;
    Host_Call("video", "Video_GetFramebuffer", &pixels);
    ASSERT_NE(pixels, nullptr);
    const uint32_t ppr = VideoValue("Video_GetPixelsPerRow");
    for (uint32_t y = 0; y < 480; ++y)
        for (uint32_t x = 0; x < 800; ++x) pixels[y * ppr + x] = (x & 0xFF) << 16 | (y & 0xFF) << 8 | 0x5A;
    const uint32_t before = Headless_GetBlitCount();
    VideoBlitArgs other;
    other.driver = Host_FindDriver("event");
    Host_Call("video", "Video_Blit", &other);
    EXPECT_EQ(Headless_GetBlitCount(), before);
    Headless_PostPaint();
    Settle();
    EXPECT_EQ(Headless_GetBlitCount(), before + 1);

    ASSERT_TRUE(Headless_SaveScreen(dir.File("dump.png").c_str()));
    std::vector<unsigned char> rgb;
    unsigned w = 0, h = 0;
    ASSERT_EQ(lodepng::decode(rgb, w, h, dir.File("dump.png"), LCT_RGB, 8), 0u);
    ASSERT_EQ(std::pair(w, h), std::pair(800u, 480u));
    for (uint32_t y : {0u, 123u, 479u}) {
        for (uint32_t x : {0u, 300u, 799u}) {
            const unsigned char* p = &rgb[(y * 800 + x) * 3];
            EXPECT_EQ(std::tuple(p[0], p[1], p[2]), std::tuple(x & 0xFF, y & 0xFF, 0x5A));
        }
    }
    Host_Call("video", "Video_Blit", nullptr);
    EXPECT_EQ(Headless_GetBlitCount(), before + 2);
}

TEST_F(HeadlessRun, AScriptDrivesTheLoopAndClosesAtItsEnd) {
    Settle();
    events.clear();
    std::ofstream(dir.File("script.txt")) << "char x\nwait 3\nclick 40 50\n";
    ASSERT_TRUE(Headless_LoadScript(dir.File("script.txt").c_str()));
    answer = [](const AppEvent& e) { return e.kind == kAppEventCloseRequested ? 1 : 0; };
    int passes = 0;
    while (Host_LoopPass() == 0 && passes < 100) ++passes;
    EXPECT_LT(passes, 100);
    auto input = EventsOfKind(kAppEventInput);
    ASSERT_EQ(input.size(), 3u);
    EXPECT_EQ(input[0].payload[1], uint32_t('x'));
    EXPECT_EQ(input[1].payload[3], 1u);
    EXPECT_EQ(input[2].payload[3], 0u);
    EXPECT_EQ(EventsOfKind(kAppEventCloseRequested).size(), 1u);
}

}  // namespace
