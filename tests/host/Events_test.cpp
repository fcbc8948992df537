// The event ring, the system event pump and the main loop, with the program's
// own drivers on the headless backend.
#include "HostFixture.h"
#include "host/CursorWaitScope.h"
#include "host/Host_Backend.h"
#include "host/Host_Window.h"

#include <cstring>

namespace {

void Enqueue(uint32_t n) {
    AppEvent e;
    e.kind = 100;
    e.payload[0] = n;
    Host_Call("event", "Event_AppEventEnqueue", &e);
}

TEST_F(HostTest, StartComesFirstThenResizedWithTheWindowSize) {
    Host_LoopPass();
    ASSERT_GE(events.size(), 2u);
    EXPECT_EQ(events[0].kind, kAppEventStart);
    EXPECT_EQ(events[1].kind, kAppEventResized);
    EXPECT_EQ(std::pair(events[1].payload[0], events[1].payload[1]), std::pair(800u, 480u));
    EXPECT_EQ(VideoValue("Video_GetPixelsPerRow"), 800u);
}

TEST_F(HostTest, TheDriversAreRegisteredInOrderWithTheirDependencies) {
    const auto& drivers = Host_GetState()->drivers;
    std::string names;
    for (const auto& d : drivers) names += std::string(d->active ? " " : " inactive:") + d->name;
    EXPECT_EQ(names, " video event keyboard pointer filedialog os");
    // Use counts are the dependants: event and filedialog on video, keyboard and pointer on event.
    EXPECT_EQ(drivers[0]->useCount, 2u);
    EXPECT_EQ(drivers[1]->useCount, 2u);
    EXPECT_EQ(drivers[4]->useCount, 0u);
    EXPECT_STREQ(drivers[5]->methods[0]->name, "OS_ShowURL");  // the one method no other test calls
}

TEST_F(HostTest, TheRingOverwritesItsOldestRecord) {
    Ready();
    HostState* host = Host_GetState();
    AppEventHandler handler = host->appHandler;
    host->appHandler = nullptr;  // records stay queued without a handler
    for (uint32_t n = 1; n <= kAppQueueSize + 1; ++n) Enqueue(n);
    Host_LoopPass();
    EXPECT_TRUE(events.empty());
    host->appHandler = handler;
    Host_LoopPass();
    ASSERT_EQ(events.size(), kAppQueueSize + 1);
    // The 1025th record took the first one's slot: record 1 is never seen.
    EXPECT_EQ(events.front().payload[0], kAppQueueSize + 1);
    EXPECT_EQ(events[1].payload[0], 2u);
}

TEST_F(HostTest, AHandlerThatAnswersNonZeroStopsTheRestOfTheBatch) {
    Ready();
    for (uint32_t n = 1; n <= 4; ++n) Enqueue(n);
    answer = [](const AppEvent& e) { return e.payload[0] == 2 ? 1 : 0; };
    EXPECT_NE(Host_LoopPass(), 0);
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(Host_GetState()->pendingCount, 0u);  // counted off undelivered
}

TEST_F(HostTest, RecordsQueuedByTheHandlerAreDeliveredInTheSameBatch) {
    Ready();
    answer = [](const AppEvent& e) {
        if (e.payload[0] < 3) Enqueue(e.payload[0] + 1);
        return 0;
    };
    Enqueue(1);
    Host_LoopPass();
    ASSERT_EQ(events.size(), 3u);
    EXPECT_EQ(events[2].payload[0], 3u);
}

TEST_F(HostTest, TicksThatPiledUpArriveAsOneTickEventWithTheirCount) {
    Ready();
    Headless_PostTimer(10);  // ten periods passed while the handler was busy
    Settle();
    auto ticks = EventsOfKind(kAppEventTick);
    ASSERT_EQ(ticks.size(), 1u);
    EXPECT_EQ(ticks[0].payload[0], 1u);  // one timer message reached the window
    events.clear();
    Host_GetState()->pendingTicks = 5;
    Host_LoopPass();
    ticks = EventsOfKind(kAppEventTick);
    ASSERT_EQ(ticks.size(), 1u);
    EXPECT_EQ(ticks[0].payload[0], 5u);
    EXPECT_EQ(Host_GetState()->pendingTicks, 0u);
    // Idle virtual time brings one tick per 100 ms period.
    events.clear();
    Headless_SetAutoTicks(true);
    const uint64_t start = Headless_GetTime();
    for (int i = 0; i < 10; ++i) Host_LoopPass();
    EXPECT_EQ(Headless_GetTime() - start, 1000u);
    EXPECT_GE(EventsOfKind(kAppEventTick).size(), 8u);
    for (const AppEvent& t : EventsOfKind(kAppEventTick)) EXPECT_EQ(t.payload[0], 1u);
}

TEST_F(HostTest, KeyboardAndPointerRecordsBecomeOneInputEventEach) {
    Ready();
    Headless_PostButton(5, 6, false);  // pressed outside the window, released inside: passed on
    Headless_PostChar('A');
    Headless_PostChar(kCharEscape);
    Headless_PostButton(10, 20, true);
    Headless_PostPointerMove(11, 21);
    Headless_PostButton(12, 22, false);
    Headless_PostPointerMove(13, 23);
    Settle();
    const uint32_t expected[][4] = {{kInputPointer, 5, 6, 0},   {kInputKeyboard, 'A', 1, 0},
                                    {kInputKeyboard, 27, 1, 0}, {kInputPointer, 10, 20, 1},
                                    {kInputPointer, 11, 21, 1},  // moves carry the kept button state
                                    {kInputPointer, 12, 22, 0}, {kInputPointer, 13, 23, 0}};
    auto input = EventsOfKind(kAppEventInput);
    ASSERT_EQ(input.size(), std::size(expected));
    for (size_t i = 0; i < input.size(); ++i)
        EXPECT_EQ(std::memcmp(input[i].payload, expected[i], sizeof expected[i]), 0) << i;
}

TEST_F(HostTest, ResizeRebuildsTheFramebufferAndIgnoresMinimisingAndUnchangedSizes) {
    Ready();
    Headless_PostResize(0, 0);
    Headless_PostResize(640, 0);
    Headless_PostResize(800, 480);
    Settle();
    EXPECT_TRUE(EventsOfKind(kAppEventResized).empty());
    Headless_PostResize(801, 301);
    Settle();
    auto resized = EventsOfKind(kAppEventResized);
    ASSERT_EQ(resized.size(), 1u);
    EXPECT_EQ(std::pair(resized[0].payload[0], resized[0].payload[1]), std::pair(801u, 301u));
    EXPECT_EQ(VideoValue("Video_GetHeight"), 301u);
    EXPECT_EQ(VideoValue("Video_GetPixelsPerRow"), 804u);  // rows rounded up to a multiple of 4
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
    uint8_t canceled = 9;
    auto ask = [&](const char* method, std::optional<std::string> answer) {
        Headless_QueueDialogAnswer(answer);
        Host_Call("filedialog", method, nullptr);
        Host_Call("filedialog", "FileDialog_FileGetDialogCanceled", &canceled);
        Host_Call("filedialog", "FileDialog_FileGetName", &name);
    };
    ask("FileDialog_FileOpen", std::string("/images/m42.fits"));
    EXPECT_EQ(canceled, 0);
    EXPECT_STREQ(name, "/images/m42.fits");
    ask("FileDialog_FileSave", std::nullopt);
    EXPECT_EQ(canceled, 1);
    EXPECT_STREQ(name, "/images/m42.fits");
    // A proposed name is cut to what the dialog's buffer holds.
    std::string longName(5000, 'n');
    Host_Call("filedialog", "FileDialog_FileSetName", longName.data());
    ask("FileDialog_FileSave", std::nullopt);
    const auto proposals = Headless_TakeDialogProposals();
    ASSERT_EQ(proposals.size(), 3u);
    EXPECT_EQ(proposals[0], "");  // no name is proposed to the first dialog
    EXPECT_EQ(proposals[1], "/images/m42.fits");
    EXPECT_EQ(proposals[2].size(), 4095u);
    Host_Call("filedialog", "FileDialog_FileSetName", nullptr);  // ignored
    Host_Call("filedialog", "FileDialog_FileGetName", &name);
    EXPECT_EQ(std::strlen(name), 5000u);
}

// The pump on a registry of the test's own: an "event" driver that has three
// messages waiting, all resizes, and a "video" driver that records resizes.
std::vector<VideoResizeArgs> g_resizes;
int g_remaining = 0;

TEST(Pump, SeveralResizesInOnePumpGiveOneResizeWithTheLastSize) {
    ASSERT_TRUE(Host_SelectBackend("headless"));
    Headless_Reset();
    ASSERT_NE(Host_CreateState(), nullptr);
    HostDriver* video = Host_DriverCreate("video");
    Host_DriverAddMethod(video, "Video_Resize", [](HostDriver*, HostMethod*, void* arg) {
        g_resizes.push_back(*static_cast<VideoResizeArgs*>(arg));
    });
    HostDriver* event = Host_DriverCreate("event");
    Host_DriverAddMethod(event, "Event_SysEventGetNumPending", [](HostDriver*, HostMethod*, void* arg) {
        *static_cast<uint32_t*>(arg) = g_remaining > 0 ? 3 : 0;
    });
    Host_DriverAddMethod(event, "Event_SysEventGetNext", [](HostDriver*, HostMethod*, void* arg) {
        auto* e = static_cast<SysEvent*>(arg);
        e->kind = kSysEventResized;
        e->resized.width = 100 + uint32_t(g_remaining--);
        e->resized.height = 50;
    });
    Host_DriverResume(video);
    Host_DriverResume(event);
    g_remaining = 3;
    Host_LoopPass();
    ASSERT_EQ(g_resizes.size(), 1u);
    EXPECT_EQ(std::pair(g_resizes[0].width, g_resizes[0].height), std::pair(101u, 50u));
    Host_DestroyState();
}

}  // namespace
