// The Win32 backend in a real window: the toolkit's test form shown in it and
// read back from the window's own device context (in this process: wine's
// display driver without a screen gives other processes black), posted mouse
// and character messages reaching the widgets, the timer's ticks after the
// loop stood still, and the desktop program's close question answered by a
// click from outside, ending it with status 0.
#include "support/Files.h"
#include "ui/ToolkitFixture.h"

#include "host/Host.h"
#include "host/headless/Headless.h"
#include "ui/MessageBox.h"
#include "ui/Toolkit_AppEvent.h"
#include "ui/widgets/Applet.h"
#include "ui/widgets/Field.h"

#include <windows.h>

#include <chrono>
#include <cstring>

namespace {

struct Session {
    std::string archive;
    std::unique_ptr<Toolkit> toolkit;
    TestFormContent content;
    std::vector<uint32_t> ticks;  // what the test form's applet was given, tick event by tick event
    int presses = 0;              // of "BtKp"
};
Session* g_session = nullptr;

Widget* Find(const char* id) {
    return Widget_FindById(g_session->toolkit->root.get(), Widget_PackId(id));
}

int Handler(AppEvent* event) {
    Session* s = g_session;
    if (event->kind != kAppEventStart) return Toolkit_OnAppEvent(s->toolkit.get(), event);
    int code = 0;
    s->toolkit = Toolkit_CreateWithArchive(Resources_OpenPath(s->archive.c_str(), &code));
    TestForm_Load(s->toolkit.get(), &s->content);
    Applet_SetTick(
        Find("Aplt"),
        [](Toolkit*, Widget*, uint32_t ticks, uint32_t, void* user) {
            static_cast<Session*>(user)->ticks.push_back(ticks);
        },
        s);
    auto* keep = Widget_Record<ButtonRecord>(Find("BtKp"));
    keep->user = s;
    keep->onPress = [](Toolkit*, Widget*, void* user) { ++static_cast<Session*>(user)->presses; };
    return 0;
}

HWND MainWindow() {
    return FindWindowA("APPL", "Pellucida");
}

LPARAM At(const PixelRect& r) {
    return MAKELPARAM(r.x + r.width / 2, r.y + r.height / 2);
}

// A left click as the system posts it: the move, the press, the release.
void PostClick(HWND window, LPARAM at) {
    PostMessageA(window, WM_MOUSEMOVE, 0, at);
    PostMessageA(window, WM_LBUTTONDOWN, MK_LBUTTON, at);
    PostMessageA(window, WM_LBUTTONUP, 0, at);
}

// What the window shows: its client area copied out of the window's device
// context into top-down 0xRRGGBB words.
std::vector<uint32_t> ReadClient(HWND window, int width, int height) {
    HDC windowDc = GetDC(window);
    HDC memoryDc = CreateCompatibleDC(windowDc);
    BITMAPINFO info{};
    // 32 bits, rows top down (a negative height), uncompressed.
    info.bmiHeader = {sizeof info.bmiHeader, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    HBITMAP section = CreateDIBSection(memoryDc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    HGDIOBJ previous = SelectObject(memoryDc, section);
    BitBlt(memoryDc, 0, 0, width, height, windowDc, 0, 0, SRCCOPY);
    GdiFlush();
    std::vector<uint32_t> pixels(static_cast<uint32_t*>(bits), static_cast<uint32_t*>(bits) + width * height);
    for (uint32_t& p : pixels) p &= 0xFFFFFF;
    SelectObject(memoryDc, previous);
    DeleteObject(section);
    DeleteDC(memoryDc);
    ReleaseDC(window, windowDc);
    return pixels;
}

// A program started by a test, ended by force when the test stops early.
struct ChildProcess {
    PROCESS_INFORMATION info{};
    ~ChildProcess() {
        DWORD status = 0;
        if (info.hProcess && GetExitCodeProcess(info.hProcess, &status) && status == STILL_ACTIVE)
            TerminateProcess(info.hProcess, 99);
        if (info.hThread) CloseHandle(info.hThread);
        if (info.hProcess) CloseHandle(info.hProcess);
    }
};

class Win32Window : public testing::Test {
protected:
    Session session;

    void Start(const char* backend, uint32_t width = 0, uint32_t height = 0) {
        session = Session{};
        session.archive = ToolkitTest_ArchivePath();
        if (session.archive.empty()) GTEST_SKIP() << "no resources archive beside the test program";
        g_session = &session;
        ASSERT_TRUE(Host_SelectBackend(backend));
        if (width) {
            Headless_Reset();
            Headless_SetAutoTicks(false);
            Headless_SetInitialSize(width, height);
        }
        Host_CreateMainWindow();
        ASSERT_TRUE(Host_Init(Handler));
        Settle();
        ASSERT_NE(session.toolkit, nullptr);
    }

    void Stop() { ToolkitTest_EndHosted(g_session); }

    void TearDown() override { Stop(); }

    // Loop passes while anything but the timer's next tick waits: a window
    // message, an application event (the timer never stops in the window).
    void Settle(int limit = 200) {
        const bool headless = std::strcmp(Host_GetBackendName(), "headless") == 0;
        for (int i = 0; i < limit; ++i) {
            const HostState* host = Host_GetState();
            MSG m;
            const bool waiting = headless ? Headless_PendingMessages() != 0 || host->pendingTicks != 0
                                          : PeekMessageA(&m, nullptr, 0, WM_TIMER - 1, PM_NOREMOVE) ||
                                                PeekMessageA(&m, nullptr, WM_TIMER + 1, ~0u, PM_NOREMOVE);
            if (!waiting && host->pendingCount == 0) return;
            Host_LoopPass();
        }
    }

    // Loop passes until a tick reached the applet and no timer message posted
    // before `since` (GetTickCount) waits any more.
    void TakeTicks(DWORD since, int limit = 50) {
        MSG m;
        for (int i = 0; i < limit; ++i) {
            if (!session.ticks.empty() &&
                !(PeekMessageA(&m, nullptr, WM_TIMER, WM_TIMER, PM_NOREMOVE) && LONG(m.time - since) <= 0))
                return;
            Host_LoopPass();
        }
    }

    PixelRect Rect(const char* id) { return Widget_PixelRect(session.toolkit.get(), Find(id)); }
};

// The window shows exactly what the headless backend draws at its size, and
// posted clicks and characters reach the widgets (after the picture is taken).
TEST_F(Win32Window, ShowsWhatTheHeadlessBackendDrawsAndTakesPostedInput) {
    Start("win32");
    HWND window = MainWindow();
    ASSERT_NE(window, nullptr);
    RECT client;
    GetClientRect(window, &client);
    const int width = client.right, height = client.bottom;
    const std::vector<uint32_t> shown = ReadClient(window, width, height);
    PostClick(window, At(Rect("BtKp")));
    Settle();
    EXPECT_EQ(session.presses, 1);
    // "f" is the field's quick key; once it holds the focus, characters are text.
    for (char c : std::string("f7")) PostMessageA(window, WM_CHAR, WPARAM(c), 0);
    Settle();
    EXPECT_EQ(*Field_Text(Find("Fld0")), "427");
    Stop();

    Start("headless", uint32_t(width), uint32_t(height));
    const std::vector<uint32_t>& drawn = Headless_GetScreen();
    ASSERT_EQ(drawn.size(), shown.size()) << "window " << width << "x" << height;
    size_t differ = 0, first = 0;
    for (size_t i = 0; i < drawn.size(); ++i)
        if (drawn[i] != shown[i] && differ++ == 0) first = i;
    EXPECT_EQ(differ, 0u) << "first at (" << first % width << ", " << first / width << "): window "
                          << std::hex << shown[first] << ", headless " << drawn[first];
}

// Timer messages that pile up while nothing takes them collapse into the one
// the window procedure sees; a modal pump (a dialog inside the handler)
// dispatches each, and the next tick carries them all.
TEST_F(Win32Window, TicksAfterTheLoopStoodStillArriveAsOneTickEvent) {
    constexpr uint32_t kPeriods = 10;
    const auto stillFor = std::chrono::milliseconds(kPeriods * 100 + 50);
    struct Case {
        const char* meanwhile;
        bool pump;
        uint32_t least, most;  // the count of the first tick event after the pause
    };
    // A loaded machine may hold the timer's thread back for a period or more,
    // so the pumped count only has to show that the ticks were summed.
    const Case cases[] = {{"busy, nothing pumped", false, 1, 1},
                          {"a modal pump", true, kPeriods / 2, kPeriods + 1}};
    Start("win32");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.meanwhile);
        Settle();
        Host_GetState()->pendingTicks = 0;  // what was counted before the pause
        session.ticks.clear();
        const auto until = std::chrono::steady_clock::now() + stillFor;
        while (std::chrono::steady_clock::now() < until) {
            Sleep(10);
            MSG message;
            while (c.pump && PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
        }
        TakeTicks(GetTickCount());
        ASSERT_FALSE(session.ticks.empty());
        // A period may end while the passes run: one more tick of 1 at most.
        EXPECT_LE(session.ticks.size(), 2u);
        EXPECT_GE(session.ticks[0], c.least);
        EXPECT_LE(session.ticks[0], c.most);
    }
}

// The desktop program itself: a close request brings its question, "Cancel"
// keeps it running, "Close" ends it with status 0. The box's buttons lie
// where the toolkit puts them for the window's client size.
TEST(Win32Program, TheCloseQuestionAnsweredByClicksEndsTheProgramWithStatusZero) {
    namespace fs = std::filesystem;
    const std::string archive = ToolkitTest_ArchivePath();
    const fs::path program = fs::path(Host_GetProgramDir()) / ".." / ExecutableName("pellucida");
    if (archive.empty() || !fs::is_regular_file(program))
        GTEST_SKIP() << "no program or archive beside the tests";
    ASSERT_EQ(MainWindow(), nullptr) << "another program's window is up: ours would hand over to it";
    const fs::path state = fs::temp_directory_path() / "pellucida-window-test";
    fs::create_directories(state);
    // For the program started here; put back when the test ends.
    const EnvScope stateDir("PELLUCIDA_STATE_DIR", state.string()), host("PELLUCIDA_HOST", "win32");

    std::wstring command = L"\"" + program.wstring() + L"\"";
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    ChildProcess child;
    ASSERT_TRUE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                               &startup, &child.info));
    HWND window = nullptr;
    for (int i = 0; i < 200 && !window; ++i, Sleep(100)) {
        DWORD owner = 0;
        // Shown maximised: its client size is the one the program draws for.
        if (HWND w = MainWindow(); w && GetWindowThreadProcessId(w, &owner) &&
                                   owner == child.info.dwProcessId && IsWindowVisible(w) && IsZoomed(w))
            window = w;
    }
    ASSERT_NE(window, nullptr) << "the program's window did not appear";
    RECT client{};
    GetClientRect(window, &client);

    auto tk = ToolkitTest_Archived(uint32_t(client.right), uint32_t(client.bottom), nullptr);
    Toolkit_LoadFont(tk.get());
    const std::vector<Widget*> buttons =
        MessageBox_Buttons(MessageBox_Show(tk.get(), kCloseTitle, kCloseText, kMessageBoxError, nullptr,
                                           nullptr, 2, kCloseButton, kCancelButton));
    ASSERT_EQ(buttons.size(), 2u);

    struct Answer {
        const char* button;
        Widget* widget;
        DWORD waitMs;
        DWORD result;  // of waiting for the process to end
    };
    const Answer answers[] = {{"Cancel", buttons[1], 1500, WAIT_TIMEOUT},
                              {"Close", buttons[0], 20000, WAIT_OBJECT_0}};
    for (const Answer& a : answers) {
        SCOPED_TRACE(a.button);
        PostMessageA(window, WM_CLOSE, 0, 0);
        PostClick(window, At(Widget_PixelRect(tk.get(), a.widget)));
        EXPECT_EQ(WaitForSingleObject(child.info.hProcess, a.waitMs), a.result);
    }
    DWORD status = STILL_ACTIVE;
    GetExitCodeProcess(child.info.hProcess, &status);
    EXPECT_EQ(status, 0u);
    std::error_code ignored;
    fs::remove_all(state, ignored);
}

}  // namespace
