// State shared by the Win32 backend's files. Only host/win32 includes windows.h.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <string>

struct HostInstanceRequest;

// A later start finds the running program by its window's class and title.
inline constexpr const char* kWin32WindowClass = "APPL";
inline constexpr const char* kWin32WindowTitle = "Pellucida";
// WM_COPYDATA tag of a later start's request: the UTF-8 path of a file to open.
inline constexpr ULONG_PTR kWin32OpenRequest = 0x50454C4F;  // "PELO"

struct Win32State {
    HINSTANCE instance = nullptr;
    HWND window = nullptr;
    HDC windowDc = nullptr;
    UINT timer = 0;            // the multimedia timer's id, 0 when none runs
    UINT timerResolution = 0;  // what timeBeginPeriod was given
};

Win32State& Win32_State();

// UTF-16 <-> UTF-8.
std::string Win32_Utf8(const wchar_t* text, int length = -1);
std::wstring Win32_Wide(const std::string& text);

LRESULT CALLBACK Win32_WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

bool Win32_MessagePending();
bool Win32_DispatchOneMessage();
void Win32_WaitForInput(uint32_t maxMs);
void Win32_TimerStart();
void Win32_TimerStop();

// The open or save dialog (Win32_FileDialog.cpp), as HostBackend::FileDialog.
bool Win32_FileDialog(bool save, const std::string& current, std::string* chosen);
// A later start's request, on the main thread: the window comes forward and a
// file to open is handed over as if it had been dropped on the window.
void Win32_InstanceRequested(const HostInstanceRequest& request);
