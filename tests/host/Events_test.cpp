// The event ring, the system event pump and the main loop, with the program's
// own drivers on the headless backend.
#include "HostFixture.h"
#include "host/CursorWaitScope.h"
#include "host/Host_Backend.h"
#include "host/Host_Window.h"

#include <cstring>

namespace {

AppEvent Numbered(uint32_t n) {
    AppEvent e;
    e.kind = 100;
    e.payload[0] = n;
    return e;
}

TEST_F(HostTest, StartComesFirstThenResizedWithTheWindowSize) {
    Host_LoopPass();
    ASSERT_GE(events.size(), 2u);
    EXPECT_EQ(events[0].kind, kAppEventStart);
    EXPECT_EQ(events[1].kind, kAppEventResized);
    EXPECT_EQ(events[1].payload[0], 800u);
    EXPECT_EQ(events[1].payload[1], 480u);
    EXPECT_EQ(VideoValue("Video_GetWidth"), 800u);
    EXPECT_EQ(VideoValue("Video_GetPixelsPerRow"), 800u);
}

TEST_F(HostTest, TheDriversAreRegisteredInOrderWithTheirMethods) {
    const std::vector<std::pair<const char*, std::vector<const char*>>> expected = {
        {"video",
         {"Video_GetWidth", "Video_GetHeight", "Video_GetFramebuffer", "Video_GetPixelsPerRow", "Video_Blit",
          "Video_Resize", "Video_SetCursorArrow", "Video_SetCursorWait", "Video_Resize", "DESTRUCT"}},
        {"event",
         {"Event_SysEventGetNext", "Event_SysEventGetNumPending", "Event_AppEventSetHandler",
          "Event_AppEventEnqueue", "DESTRUCT", "RESUME"}},
        {"keyboard", {"Input_ProcessInputSysEvent", "DESTRUCT"}},
        {"pointer", {"Input_ProcessInputSysEvent", "DESTRUCT"}},
        {"filedialog",
         {"FileDialog_FileOpen", "FileDialog_FileSave", "FileDialog_FileGetName",
          "FileDialog_FileGetDialogCanceled", "FileDialog_FileSetName", "DESTRUCT"}},
        {"os", {"OS_ShowURL", "DESTRUCT"}},
    };
    const auto& drivers = Host_GetState()->drivers;
    ASSERT_EQ(drivers.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_STREQ(drivers[i]->name, expected[i].first);
        EXPECT_EQ(drivers[i]->active, 1);
        ASSERT_EQ(drivers[i]->methods.size(), expected[i].second.size()) << expected[i].first;
        for (size_t m = 0; m < expected[i].second.size(); ++m)
            EXPECT_STREQ(drivers[i]->methods[m]->name, expected[i].second[m]);
    }
    // Use counts are the dependants: event and filedialog on video, keyboard and pointer on event.
    EXPECT_EQ(drivers[0]->useCount, 2u);
    EXPECT_EQ(drivers[1]->useCount, 2u);
}

TEST_F(HostTest, TheRingOverwritesItsOldestRecord) {
    Settle();
    events.clear();
    HostState* host = Host_GetState();
    AppEventHandler handler = host->appHandler;
    host->appHandler = nullptr;  // records stay queued without a handler
    for (uint32_t n = 1; n <= kAppQueueSize + 1; ++n) {
        AppEvent e = Numbered(n);
        Host_Call("event", "Event_AppEventEnqueue", &e);
    }
    Host_LoopPass();
    EXPECT_TRUE(events.empty());
    EXPECT_EQ(host->pendingCount, kAppQueueSize + 1);
    host->appHandler = handler;
    Host_LoopPass();
    ASSERT_EQ(events.size(), kAppQueueSize + 1);
    // The 1025th record took the first one's slot: record 1 is never seen.
    EXPECT_EQ(events.front().payload[0], kAppQueueSize + 1);
    EXPECT_EQ(events[1].payload[0], 2u);
    for (const AppEvent& e : events) EXPECT_NE(e.payload[0], 1u);
}

TEST_F(HostTest, AHandlerThatAnswersNonZeroStopsTheRestOfTheBatch) {
    Settle();
    events.clear();
    for (uint32_t n = 1; n <= 4; ++n) {
        AppEvent e = Numbered(n);
        Host_Call("event", "Event_AppEventEnqueue", &e);
    }
    answer = [](const AppEvent& e) { return e.payload[0] == 2 ? 1 : 0; };
    EXPECT_NE(Host_LoopPass(), 0);
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[1].payload[0], 2u);
    EXPECT_EQ(Host_GetState()->pendingCount, 0u);  // counted off undelivered
}

TEST_F(HostTest, RecordsQueuedByTheHandlerAreDeliveredInTheSameBatch) {
    Settle();
    events.clear();
    answer = [](const AppEvent& e) {
        if (e.payload[0] < 3) {
            AppEvent next = Numbered(e.payload[0] + 1);
            Host_Call("event", "Event_AppEventEnqueue", &next);
        }
        return 0;
    };
    AppEvent first = Numbered(1);
    Host_Call("event", "Event_AppEventEnqueue", &first);
    Host_LoopPass();
    ASSERT_EQ(events.size(), 3u);
    EXPECT_EQ(events[2].payload[0], 3u);
}

TEST_F(HostTest, TicksThatPiledUpArriveAsOneTickEvent) {
    Settle();
    events.clear();
    Headless_PostTimer(10);  // ten periods passed while the handler was busy
    Settle();
    auto ticks = EventsOfKind(kAppEventTick);
    ASSERT_EQ(ticks.size(), 1u);
    EXPECT_EQ(ticks[0].payload[0], 1u);  // one timer message reached the window
    EXPECT_EQ(Host_GetState()->pendingTicks, 0u);

    events.clear();
    Host_GetState()->pendingTicks = 5;
    Host_LoopPass();
    ticks = EventsOfKind(kAppEventTick);
    ASSERT_EQ(ticks.size(), 1u);
    EXPECT_EQ(ticks[0].payload[0], 5u);
}

TEST_F(HostTest, IdleVirtualTimeBringsOneTickPerPeriod) {
    Settle();
    events.clear();
    Headless_SetAutoTicks(true);
    uint64_t start = Headless_GetTime();
    for (int i = 0; i < 10; ++i) Host_LoopPass();
    EXPECT_EQ(Headless_GetTime() - start, 1000u);
    auto ticks = EventsOfKind(kAppEventTick);
    EXPECT_GE(ticks.size(), 8u);
    for (const AppEvent& t : ticks) EXPECT_EQ(t.payload[0], 1u);
}

TEST_F(HostTest, KeyboardAndPointerRecordsBecomeOneInputEventEach) {
    Settle();
    events.clear();
    Headless_PostChar('A');
    Headless_PostChar(kCharEscape);
    Headless_PostButton(10, 20, true);
    Headless_PostPointerMove(11, 21);
    Headless_PostButton(12, 22, false);
    Headless_PostPointerMove(13, 23);
    Settle();
    auto input = EventsOfKind(kAppEventInput);
    ASSERT_EQ(input.size(), 6u);
    auto is = [](const AppEvent& e, uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
        return e.payload[0] == a && e.payload[1] == b && e.payload[2] == c && e.payload[3] == d;
    };
    EXPECT_TRUE(is(input[0], kInputKeyboard, 'A', 1, 0));
    EXPECT_TRUE(is(input[1], kInputKeyboard, 27, 1, 0));
    EXPECT_TRUE(is(input[2], kInputPointer, 10, 20, 1));
    EXPECT_TRUE(is(input[3], kInputPointer, 11, 21, 1));  // moves carry the kept button state
    EXPECT_TRUE(is(input[4], kInputPointer, 12, 22, 0));
    EXPECT_TRUE(is(input[5], kInputPointer, 13, 23, 0));
}

TEST_F(HostTest, AReleaseWithoutAPressIsPassedOn) {
    Settle();
    events.clear();
    Headless_PostButton(5, 6, false);  // pressed outside the window, released inside
    Settle();
    auto input = EventsOfKind(kAppEventInput);
    ASSERT_EQ(input.size(), 1u);
    EXPECT_EQ(input[0].payload[3], 0u);
}

TEST_F(HostTest, ResizeRebuildsTheFramebufferWithRoundedRows) {
    Settle();
    events.clear();
    Headless_PostResize(801, 301);
    Settle();
    auto resized = EventsOfKind(kAppEventResized);
    ASSERT_EQ(resized.size(), 1u);
    EXPECT_EQ(resized[0].payload[0], 801u);
    EXPECT_EQ(resized[0].payload[1], 301u);
    EXPECT_EQ(VideoValue("Video_GetWidth"), 801u);
    EXPECT_EQ(VideoValue("Video_GetHeight"), 301u);
    EXPECT_EQ(VideoValue("Video_GetPixelsPerRow"), 804u);
}

TEST_F(HostTest, MinimisingAndUnchangedSizesAreIgnored) {
    Settle();
    events.clear();
    Headless_PostResize(0, 0);
    Headless_PostResize(640, 0);
    Headless_PostResize(800, 480);
    Settle();
    EXPECT_TRUE(EventsOfKind(kAppEventResized).empty());
    EXPECT_EQ(VideoValue("Video_GetWidth"), 800u);
}

TEST_F(HostTest, CloseRequestBecomesAnApplicationEvent) {
    Settle();
    events.clear();
    Headless_PostClose();
    answer = [](const AppEvent& e) { return e.kind == kAppEventCloseRequested ? 1 : 0; };
    int stop = 0;
    for (int i = 0; i < 5 && !stop; ++i) stop = Host_LoopPass();
    EXPECT_NE(stop, 0);
    ASSERT_EQ(EventsOfKind(kAppEventCloseRequested).size(), 1u);
}

TEST_F(HostTest, BlitCopiesTheFramebufferToTheWindow) {
    Settle();
    uint32_t* pixels = nullptr;
    Host_Call("video", "Video_GetFramebuffer", &pixels);
    ASSERT_NE(pixels, nullptr);
    const uint32_t ppr = VideoValue("Video_GetPixelsPerRow");
    pixels[0] = 0x123456;
    pixels[ppr * 479 + 799] = 0xABCDEF;

    uint32_t before = Headless_GetBlitCount();
    VideoBlitArgs other;
    other.driver = Host_FindDriver("event");
    Host_Call("video", "Video_Blit", &other);  // names another driver: ignored
    EXPECT_EQ(Headless_GetBlitCount(), before);

    Headless_PostPaint();  // the window asks to be repainted
    Settle();
    EXPECT_EQ(Headless_GetBlitCount(), before + 1);
    ASSERT_EQ(Headless_GetScreen().size(), 800u * 480u);
    EXPECT_EQ(Headless_GetScreen()[0], 0x123456u);
    EXPECT_EQ(Headless_GetScreen()[479 * 800 + 799], 0xABCDEFu);

    VideoBlitArgs own;
    own.driver = Host_FindDriver("video");
    Host_Call("video", "Video_Blit", &own);
    EXPECT_EQ(Headless_GetBlitCount(), before + 2);
}

TEST_F(HostTest, TheWaitCursorLastsAsLongAsItsScope) {
    {
        CursorWaitScope wait;
        EXPECT_EQ(Headless_GetCursor(), kHostCursorWait);
    }
    EXPECT_EQ(Headless_GetCursor(), kHostCursorArrow);
}

TEST_F(HostTest, FileDialogKeepsTheNameWhenCancelled) {
    const char* name = nullptr;
    Host_Call("filedialog", "FileDialog_FileGetName", &name);
    ASSERT_NE(name, nullptr);
    EXPECT_STREQ(name, "");

    Headless_QueueDialogAnswer(std::string("/images/m42.fits"));
    Host_Call("filedialog", "FileDialog_FileOpen", nullptr);
    uint8_t canceled = 9;
    Host_Call("filedialog", "FileDialog_FileGetDialogCanceled", &canceled);
    EXPECT_EQ(canceled, 0);
    Host_Call("filedialog", "FileDialog_FileGetName", &name);
    EXPECT_STREQ(name, "/images/m42.fits");

    Headless_QueueDialogAnswer(std::nullopt);
    Host_Call("filedialog", "FileDialog_FileSave", nullptr);
    Host_Call("filedialog", "FileDialog_FileGetDialogCanceled", &canceled);
    EXPECT_EQ(canceled, 1);
    Host_Call("filedialog", "FileDialog_FileGetName", &name);
    EXPECT_STREQ(name, "/images/m42.fits");

    // A proposed name is cut to what the dialog's buffer holds.
    std::string longName(5000, 'n');
    Host_Call("filedialog", "FileDialog_FileSetName", longName.data());
    Host_Call("filedialog", "FileDialog_FileSave", nullptr);
    auto proposals = Headless_TakeDialogProposals();
    ASSERT_EQ(proposals.size(), 3u);
    EXPECT_EQ(proposals[0], "");
    EXPECT_EQ(proposals[1], "/images/m42.fits");
    EXPECT_EQ(proposals[2].size(), 4095u);
    Host_Call("filedialog", "FileDialog_FileSetName", nullptr);  // ignored
    Host_Call("filedialog", "FileDialog_FileGetName", &name);
    EXPECT_EQ(std::strlen(name), 5000u);
}

TEST_F(HostTest, ShutdownUnloadsEveryDriver) {
    Settle();
    Host_Shutdown();
    EXPECT_EQ(Host_GetState(), nullptr);
    // The fixture's teardown shuts down again: it must be harmless.
}

// The pump on a registry of the test's own: an "event" driver that has three
// messages waiting, all resizes, and a "video" driver that records resizes.
namespace pump {

std::vector<VideoResizeArgs> resizes;
int remaining = 0;

void NumPending(HostDriver*, HostMethod*, void* arg) {
    *static_cast<uint32_t*>(arg) = remaining > 0 ? 3 : 0;
}
void Next(HostDriver*, HostMethod*, void* arg) {
    auto* event = static_cast<SysEvent*>(arg);
    event->kind = kSysEventResized;
    event->resized.width = 100 + uint32_t(remaining);
    event->resized.height = 50;
    --remaining;
}
void Resize(HostDriver*, HostMethod*, void* arg) {
    resizes.push_back(*static_cast<VideoResizeArgs*>(arg));
}

void Add(HostDriver* d, const char* name, HostMethodFn fn) {
    HostMethod m;
    Host_CopyName(m.name, name);
    m.function = fn;
    Host_DriverAddMethod(d, m);
}

TEST(Pump, SeveralResizesInOnePumpGiveOneResizeWithTheLastSize) {
    ASSERT_TRUE(Host_SelectBackend("headless"));
    Headless_Reset();
    ASSERT_NE(Host_CreateState(), nullptr);
    HostDriver* video = Host_DriverCreate("video");
    Add(video, "Video_Resize", Resize);
    HostDriver* event = Host_DriverCreate("event");
    Add(event, "Event_SysEventGetNumPending", NumPending);
    Add(event, "Event_SysEventGetNext", Next);
    Host_DriverResume(video);
    Host_DriverResume(event);
    resizes.clear();
    remaining = 3;
    Host_LoopPass();
    ASSERT_EQ(resizes.size(), 1u);
    EXPECT_EQ(resizes[0].width, 101u);
    EXPECT_EQ(resizes[0].height, 50u);
    Host_DestroyState();
}

}  // namespace pump

}  // namespace
