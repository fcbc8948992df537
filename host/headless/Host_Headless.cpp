// The headless backend: the main window, its framebuffer and its message
// queue live in memory; input, ticks and dialog answers come from code or a
// script; time is virtual. Implements every backend entry; nothing is a no-op
// except the cursor shape, which is only recorded.
#include "host/headless/Headless.h"

#include "host/Host_Threads.h"
#include "host/Host_Window.h"
#include "host/headless/Headless_Script.h"

#include <lodepng.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <thread>
#include <utility>

namespace {

struct Message {
    enum Type { kChar, kButton, kMove, kSize, kClose, kTimer, kPaint, kDrop } type;
    uint32_t a = 0, b = 0;
    bool down = false;
    std::string path;  // kDrop
};

constexpr uint64_t kTickMs = 100;
constexpr uint64_t kAfterScriptLimitMs = 10 * 60 * 1000;

struct HeadlessState {
    std::deque<Message> queue;
    bool timerRunning = false;
    bool autoTicks = true;
    uint64_t timeMs = 0;
    std::vector<uint32_t> screen;
    uint32_t screenWidth = 0, screenHeight = 0;
    uint32_t blits = 0;
    HostCursor cursor = kHostCursorArrow;
    std::vector<std::string> messages;
    std::deque<std::optional<std::string>> dialogAnswers;
    std::vector<std::string> proposals;
    uint32_t initialWidth = 0, initialHeight = 0;
    HeadlessScript script;
    bool scriptEnded = false;
    uint64_t scriptEndMs = 0;
    HeadlessAppCommandFn appCommand = nullptr;
    HeadlessAppBusyFn appBusy = nullptr;
};

HeadlessState& State() {
    static HeadlessState state;
    return state;
}

void Post(Message message) {
    State().queue.push_back(message);
}

void InitialSize(uint32_t* width, uint32_t* height) {
    HeadlessState& s = State();
    *width = 800;
    *height = 480;
    if (s.initialWidth && s.initialHeight) {
        *width = s.initialWidth;
        *height = s.initialHeight;
    } else if (const char* env = std::getenv("PELLUCIDA_HEADLESS_SIZE")) {
        unsigned w = 0, h = 0;
        if (std::sscanf(env, "%ux%u", &w, &h) == 2 && w > 0 && h > 0 && w <= 16384 && h <= 16384) {
            *width = w;
            *height = h;
        }
    }
}

// One idle period of virtual time: on to the next 100 ms boundary, with the
// timer message that period brings.
void AdvanceIdle() {
    HeadlessState& s = State();
    s.timeMs = (s.timeMs / kTickMs + 1) * kTickMs;
    // Virtual time waits a little for real work on another thread, rather than
    // spinning through ticks while it runs.
    if (Host_IsBackgroundRunning()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (s.timerRunning && s.autoTicks) Post({Message::kTimer});
    if (s.scriptEnded && s.timeMs - s.scriptEndMs > kAfterScriptLimitMs) {
        std::fputs("headless: the script ended but the program did not close\n", stderr);
        std::exit(1);
    }
}

void CreateMainWindow() {
    uint32_t width, height;
    InitialSize(&width, &height);
    HostWindow_OnCreated(width, height);
}

void DestroyMainWindow() {
    HostWindow_OnDestroyed();
}

bool FramebufferCreate(VideoState* video) {
    auto* storage = new std::vector<uint32_t>(size_t(video->pixelsPerRow) * video->rows, 0);
    video->platform = storage;
    video->pixels = storage->data();
    return true;
}

void FramebufferDestroy(VideoState* video) {
    delete static_cast<std::vector<uint32_t>*>(video->platform);
    video->platform = nullptr;
    video->pixels = nullptr;
}

void Present(VideoState* video) {
    HeadlessState& s = State();
    s.screenWidth = video->width;
    s.screenHeight = video->height;
    s.screen.resize(size_t(video->width) * video->height);
    for (uint32_t y = 0; y < video->height; ++y) {
        const uint32_t* row = video->pixels + size_t(y) * video->pixelsPerRow;
        std::copy(row, row + video->width, s.screen.begin() + size_t(y) * video->width);
    }
    ++s.blits;
}

void SetCursor(HostCursor cursor) {
    State().cursor = cursor;
}

bool MessagePending() {
    return !State().queue.empty();
}

bool DispatchOneMessage() {
    HeadlessState& s = State();
    if (s.queue.empty()) return false;
    Message m = s.queue.front();
    s.queue.pop_front();
    switch (m.type) {
        case Message::kChar:
            HostWindow_OnChar(m.a);
            break;
        case Message::kButton:
            HostWindow_OnButton(m.a, m.b, m.down);
            break;
        case Message::kMove:
            HostWindow_OnPointerMove(m.a, m.b);
            break;
        case Message::kSize:
            HostWindow_OnSize(m.a, m.b);
            break;
        case Message::kClose:
            HostWindow_OnClose();
            break;
        case Message::kPaint:
            HostWindow_OnPaint();
            break;
        case Message::kDrop:
            HostWindow_OnDrop(m.path.c_str());
            break;
        case Message::kTimer:
            // Timer messages already waiting collapse into this one.
            std::erase_if(s.queue, [](const Message& other) { return other.type == Message::kTimer; });
            HostWindow_OnTimer();
            break;
    }
    return true;
}

void RunScriptStep() {
    HeadlessState& s = State();
    HeadlessScriptActions actions;
    actions.postChar = Headless_PostChar;
    actions.postButton = Headless_PostButton;
    actions.postMove = Headless_PostPointerMove;
    actions.postResize = Headless_PostResize;
    actions.postClose = Headless_PostClose;
    actions.postPaint = Headless_PostPaint;
    actions.postTimer = Headless_PostTimer;
    actions.idle = AdvanceIdle;
    actions.saveScreen = Headless_SaveScreen;
    actions.queueDialogAnswer = Headless_QueueDialogAnswer;
    actions.postDrop = [](const std::string& path) { Headless_PostDrop(path.c_str()); };
    actions.busy = [] {
        const HostState* host = Host_GetState();
        return !State().queue.empty() || (host && host->pendingCount != 0) ||
               Host_IsBackgroundRunning() != 0 || (State().appBusy && State().appBusy());
    };
    actions.appCommand = s.appCommand;
    if (!HeadlessScript_Step(s.script, actions, [] { return !State().queue.empty(); })) {
        s.scriptEnded = true;
        s.scriptEndMs = s.timeMs;
        Headless_PostClose();
    }
}

void WaitForInput(uint32_t) {
    HeadlessState& s = State();
    if (!s.queue.empty()) return;
    if (s.script.loaded && !s.scriptEnded) {
        RunScriptStep();
        return;
    }
    AdvanceIdle();
}

void TimerStart() {
    State().timerRunning = true;
}
void TimerStop() {
    State().timerRunning = false;
}

void ShowMessage(const char* caption, const char* text) {
    State().messages.push_back(std::string(caption) + text);
}

// A desktop's scale, as a test asks for it (PELLUCIDA_HEADLESS_SCALE, 1 by default).
double DisplayScale() {
    const char* env = std::getenv("PELLUCIDA_HEADLESS_SCALE");
    const double scale = env ? std::atof(env) : 0.0;
    return scale > 0 ? scale : 1.0;
}

bool FileDialog(bool, const std::string& current, std::string* chosen) {
    HeadlessState& s = State();
    s.proposals.push_back(current);
    if (s.dialogAnswers.empty()) return false;
    std::optional<std::string> answer = s.dialogAnswers.front();
    s.dialogAnswers.pop_front();
    if (!answer) return false;
    *chosen = *answer;
    return true;
}

}  // namespace

extern const HostBackend kHeadlessBackend = {
    "headless",        "in-memory window, scripted input, virtual time",
    CreateMainWindow,  DestroyMainWindow,
    FramebufferCreate, FramebufferDestroy,
    Present,           SetCursor,
    MessagePending,    DispatchOneMessage,
    WaitForInput,      TimerStart,
    TimerStop,         ShowMessage,
    FileDialog,        nullptr,
    DisplayScale,
};

void Headless_PostChar(uint32_t code) {
    Post({Message::kChar, code});
}
void Headless_PostButton(uint32_t x, uint32_t y, bool down) {
    Post({Message::kButton, x, y, down});
}
void Headless_PostPointerMove(uint32_t x, uint32_t y) {
    Post({Message::kMove, x, y});
}
void Headless_PostResize(uint32_t width, uint32_t height) {
    Post({Message::kSize, width, height});
}
void Headless_PostClose() {
    Post({Message::kClose});
}
void Headless_PostPaint() {
    Post({Message::kPaint});
}

void Headless_PostTimer(uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) Post({Message::kTimer});
    State().timeMs += uint64_t(count) * kTickMs;
}

size_t Headless_PendingMessages() {
    return State().queue.size();
}
uint64_t Headless_GetTime() {
    return State().timeMs;
}
void Headless_SetAutoTicks(bool on) {
    State().autoTicks = on;
}
const std::vector<uint32_t>& Headless_GetScreen() {
    return State().screen;
}
uint32_t Headless_GetScreenWidth() {
    return State().screenWidth;
}
uint32_t Headless_GetScreenHeight() {
    return State().screenHeight;
}
uint32_t Headless_GetBlitCount() {
    return State().blits;
}
HostCursor Headless_GetCursor() {
    return State().cursor;
}

bool Headless_SaveScreen(const char* path) {
    HeadlessState& s = State();
    if (s.screen.empty()) return false;
    std::vector<unsigned char> rgb(s.screen.size() * 3);
    for (size_t i = 0; i < s.screen.size(); ++i) {
        rgb[i * 3 + 0] = (s.screen[i] >> 16) & 0xFF;
        rgb[i * 3 + 1] = (s.screen[i] >> 8) & 0xFF;
        rgb[i * 3 + 2] = s.screen[i] & 0xFF;
    }
    return lodepng::encode(path, rgb, s.screenWidth, s.screenHeight, LCT_RGB, 8) == 0;
}

std::vector<std::string> Headless_TakeMessages() {
    return std::exchange(State().messages, {});
}

void Headless_QueueDialogAnswer(std::optional<std::string> answer) {
    State().dialogAnswers.push_back(std::move(answer));
}

std::vector<std::string> Headless_TakeDialogProposals() {
    return std::exchange(State().proposals, {});
}

bool Headless_LoadScript(const char* path) {
    HeadlessState& s = State();
    s.scriptEnded = false;
    return HeadlessScript_Load(path, &s.script);
}

void Headless_SetInitialSize(uint32_t width, uint32_t height) {
    State().initialWidth = width;
    State().initialHeight = height;
}

void Headless_Reset() {
    HeadlessState& s = State();
    uint32_t w = s.initialWidth, h = s.initialHeight;
    bool timer = s.timerRunning;
    s = HeadlessState{};
    s.initialWidth = w;
    s.initialHeight = h;
    s.timerRunning = timer;
}

void Headless_PostDrop(const char* path) {
    Message m{Message::kDrop};
    m.path = path;
    Post(m);
}

void Headless_SetAppCommandHandler(HeadlessAppCommandFn handler) {
    State().appCommand = handler;
}

void Headless_SetAppBusyCheck(HeadlessAppBusyFn busy) {
    State().appBusy = busy;
}
