// The window procedure shared by every backend: native window messages become
// at most one pending system event, timer ticks and blit requests here, the
// same way on every platform. Backends call these from their message dispatch.
#pragma once

#include "host/Host.h"

#include <cstdint>
#include <deque>
#include <string>

// Process-wide values of the main window.
struct HostWindowState {
    bool exists = false;
    uint32_t clientWidth = 800;
    uint32_t clientHeight = 480;
    uint32_t buttonState = 0;       // left button: 0 up, 1 down
    SysEvent pending;               // the one pending system event slot
    std::deque<std::string> drops;  // dropped paths not yet taken, oldest first
};

HostWindowState& HostWindow_State();

void HostWindow_OnCreated(uint32_t clientWidth, uint32_t clientHeight);
void HostWindow_OnDestroyed();
// Client size in framebuffer pixels; zero sizes (minimised) and unchanged
// sizes are ignored.
void HostWindow_OnSize(uint32_t width, uint32_t height);
void HostWindow_OnClose();
void HostWindow_OnChar(uint32_t code);
void HostWindow_OnButton(uint32_t x, uint32_t y, bool down);
void HostWindow_OnPointerMove(uint32_t x, uint32_t y);
// One timer message reached the window; the backend has already removed every
// further timer message waiting.
void HostWindow_OnTimer();
// The window needs repainting: the framebuffer is blitted again.
void HostWindow_OnPaint();
// A file was dropped on the window.
void HostWindow_OnDrop(const char* path);
// The oldest dropped path not yet taken; false when none waits.
bool HostWindow_TakeDrop(std::string* path);

// Hands out the pending system event and clears the slot (Event_SysEventGetNext).
void HostWindow_TakePending(SysEvent* out);

// Character codes of the control keys, as the platform's character messages give them.
constexpr uint32_t kCharBackspace = 8;
constexpr uint32_t kCharTab = 9;
constexpr uint32_t kCharEnter = 13;
constexpr uint32_t kCharEscape = 27;
