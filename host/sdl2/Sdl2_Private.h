// State shared by the SDL2 backend's files. Only host/sdl2 includes SDL.
#pragma once

#include <SDL.h>

#include <cstdint>
#include <deque>
#include <string>

struct HostInstanceRequest;

struct Sdl2State {
    SDL_Window* window = nullptr;
    SDL_Renderer* renderer = nullptr;
    SDL_Cursor* arrow = nullptr;
    SDL_Cursor* wait = nullptr;
    SDL_TimerID timer = 0;
    uint32_t timerEvent = 0;            // our registered event type for ticks
    uint32_t wakeEvent = 0;             // ours too: a later start's request waits
    std::deque<uint32_t> pendingChars;  // further characters of one text-input event
};

Sdl2State& Sdl2_State();

// Window points to framebuffer pixels (they differ on HiDPI screens).
void Sdl2_ToPixels(int x, int y, uint32_t* px, uint32_t* py);
// The window's client size in pixels.
void Sdl2_ClientSize(uint32_t* width, uint32_t* height);

bool Sdl2_MessagePending();
bool Sdl2_DispatchOneMessage();
void Sdl2_WaitForInput(uint32_t maxMs);
void Sdl2_TimerStart();
void Sdl2_TimerStop();

// Requests of later starts (Sdl2_Instance.cpp). The first runs on the
// listening thread; the rest on the main thread.
void Sdl2_InstanceRequested(const HostInstanceRequest& request);
void Sdl2_InstanceEventsUp(uint32_t wakeEvent);
void Sdl2_InstanceEventsDown();
bool Sdl2_InstanceRequestWaiting();
// Raises the window for the oldest waiting request and hands its file over as
// a drop; false when none waits.
bool Sdl2_InstanceServeOne();

// X11 extras (Sdl2_Desktop.cpp): activation with a launcher's startup id, and
// the interface scale.
void Sdl2_Activate(const std::string& startupId);
double Sdl2_DisplayScale();

// The open or save dialog (Sdl2_FileDialog.cpp), as HostBackend::FileDialog.
bool Sdl2_FileDialog(bool save, const std::string& current, std::string* chosen);
