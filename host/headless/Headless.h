// The headless backend: an in-memory window and framebuffer, input and timer
// ticks injected by code or by a script, and deterministic virtual time. Tests
// and batch runs use it (PELLUCIDA_HOST=headless).
//
// Virtual time: whenever the main loop would wait and nothing is queued, the
// clock moves on to the next 100 ms period and, while the timer runs, one timer
// message is posted, so an idle loop sees one tick per pass.
#pragma once

#include "host/Host_Backend.h"
#include "host/headless/Headless_Script.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// Injected window messages, as a user and the system would cause them.
void Headless_PostChar(uint32_t code);
void Headless_PostButton(uint32_t x, uint32_t y, bool down);
void Headless_PostPointerMove(uint32_t x, uint32_t y);
void Headless_PostResize(uint32_t width, uint32_t height);
void Headless_PostClose();
void Headless_PostPaint();
// A file dropped on the window.
void Headless_PostDrop(const char* path);
// `count` timer messages waiting at once, as after a busy handler.
void Headless_PostTimer(uint32_t count = 1);
size_t Headless_PendingMessages();

// Virtual milliseconds since the window was created.
uint64_t Headless_GetTime();
void Headless_SetAutoTicks(bool on);  // idle passes post ticks (default on)

// The window's contents as the last blit left them (width x height, 0xRRGGBB).
const std::vector<uint32_t>& Headless_GetScreen();
uint32_t Headless_GetScreenWidth();
uint32_t Headless_GetScreenHeight();
uint32_t Headless_GetBlitCount();
// Writes the window's contents as an RGB PNG; false when it cannot.
bool Headless_SaveScreen(const char* path);
HostCursor Headless_GetCursor();

// Plain messages shown so far ("caption" + "text"), oldest first; cleared on take.
std::vector<std::string> Headless_TakeMessages();

// Answers for the next file dialogs, in order: a path, or nullopt to cancel.
// A dialog with no answer queued is cancelled.
void Headless_QueueDialogAnswer(std::optional<std::string> answer);
// The name each dialog was opened with, oldest first; cleared on take.
std::vector<std::string> Headless_TakeDialogProposals();

// Loads a script run whenever the loop would otherwise wait. Lines:
//   tick [N]            N timer messages waiting at once (default 1)
//   char C | code N     a character (one literal character, or its code)
//   key backspace|tab|enter|escape
//   move X Y | press X Y | release X Y | click X Y
//   resize W H | paint | close
//   wait [N]            N idle passes of virtual time (default 1)
//   screenshot FILE     writes the window's contents as PNG
//   dialog PATH | dialog cancel
//   drop PATH           a file dropped on the window
//   idle                virtual time runs until no background task runs, nothing is queued
//                       and the program says it is not busy
// and the program's own lines, carried out by the handler it installs
// (Headless_SetAppCommandHandler): press ID, answer TEXT | answer #N,
// expect-box TITLE, set ID VALUE, drag ID X0 Y0 X1 Y1. A line that fails
// ends the program with status 3, naming the line on standard error.
// '#' starts a comment. When the script is used up the window is closed, as if
// by the user; a program that still runs 10 virtual minutes later is ended.
// Returns false, saying why on standard error, for an unreadable file or line.
bool Headless_LoadScript(const char* path);

// Installs the program's carrier of its own script lines.
void Headless_SetAppCommandHandler(HeadlessAppCommandFn handler);
// Installs the program's own "still working" test (a file being read whose
// result is not yet taken): idle time runs on while it says so.
using HeadlessAppBusyFn = bool (*)();
void Headless_SetAppBusyCheck(HeadlessAppBusyFn busy);

// Client size of the window the next CreateMainWindow makes (default 800 x 480;
// PELLUCIDA_HEADLESS_SIZE=WxH sets it too).
void Headless_SetInitialSize(uint32_t width, uint32_t height);

// Forgets every queued message, the screen and the records above (tests).
void Headless_Reset();
