// State shared by the SDL2 backend's files. Only host/sdl2 includes SDL.
#pragma once

#include <SDL.h>

#include <cstdint>
#include <deque>

struct Sdl2State {
    SDL_Window* window = nullptr;
    SDL_Renderer* renderer = nullptr;
    SDL_Cursor* arrow = nullptr;
    SDL_Cursor* wait = nullptr;
    SDL_TimerID timer = 0;
    uint32_t timerEvent = 0;            // our registered event type for ticks
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
