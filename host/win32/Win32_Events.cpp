// Win32 backend, message side: the window procedure feeding the shared one
// (Host_Window.h), the pump (one message per dispatch), the wait for input,
// and the 100 ms multimedia timer that posts WM_TIMER to the window.
#include "host/Host_Instance.h"
#include "host/Host_Window.h"
#include "host/win32/Win32_Private.h"

#include <mmsystem.h>

namespace {

constexpr UINT kTickMs = 100;

HANDLE& WaitObject() {
    static HANDLE event = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    return event;
}

// Runs on the system's timer thread: it only posts. lParam stays 0, or
// DispatchMessage would call it as a TIMERPROC.
void CALLBACK OnTimer(UINT, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR) {
    if (HWND window = Win32_State().window) PostMessageA(window, WM_TIMER, 0, 0);
}

uint32_t Low16(LPARAM value) {
    return uint32_t(value) & 0xFFFF;
}

uint32_t High16(LPARAM value) {
    return (uint32_t(value) >> 16) & 0xFFFF;
}

}  // namespace

LRESULT CALLBACK Win32_WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CREATE:
            return 0;
        case WM_DESTROY:
            PostQuitMessage(0);
            Win32_State().window = nullptr;
            return 0;
        case WM_SIZE: {
            RECT client;
            GetClientRect(window, &client);
            HostWindow_OnSize(uint32_t(client.right - client.left), uint32_t(client.bottom - client.top));
            return 0;
        }
        case WM_ACTIVATE:
            if (LOWORD(wParam) == WA_INACTIVE) {
                SetFocus(nullptr);
                return 0;
            }
            if (LOWORD(wParam) == WA_ACTIVE) {
                SetFocus(window);
                return 0;
            }
            break;  // activated by a click
        case WM_SETFOCUS:
            SetFocus(window);
            return 0;
        case WM_KILLFOCUS:
            SetFocus(nullptr);
            return 0;
        case WM_PAINT: {
            PAINTSTRUCT paint;
            BeginPaint(window, &paint);
            HostWindow_OnPaint();
            EndPaint(window, &paint);
            return 0;
        }
        case WM_CLOSE:
            HostWindow_OnClose();  // the program decides; the window stays
            return 0;
        case WM_CHAR:
            HostWindow_OnChar(uint32_t(wParam));
            return 0;
        case WM_TIMER: {
            // Ticks that piled up while the program was busy count as one.
            MSG later;
            while (PeekMessageA(&later, window, WM_TIMER, WM_TIMER, PM_REMOVE)) {
            }
            HostWindow_OnTimer();
            break;
        }
        case WM_LBUTTONDOWN:
            HostWindow_OnButton(Low16(lParam), High16(lParam), true);
            return 0;
        case WM_LBUTTONUP:
            HostWindow_OnButton(Low16(lParam), High16(lParam), false);
            return 0;
        case WM_MOUSEMOVE:
            HostWindow_OnPointerMove(Low16(lParam), High16(lParam));
            return 0;
        case WM_COPYDATA: {
            const auto* data = reinterpret_cast<const COPYDATASTRUCT*>(lParam);
            if (!data || data->dwData != kWin32OpenRequest) break;
            HostInstanceRequest request;
            request.path.assign(static_cast<const char*>(data->lpData), data->cbData);
            Win32_InstanceRequested(request);
            return TRUE;
        }
        default:
            break;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

bool Win32_MessagePending() {
    MSG message;
    return PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE) != 0;
}

bool Win32_DispatchOneMessage() {
    MSG message;
    if (!PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) return false;
    TranslateMessage(&message);
    DispatchMessageA(&message);
    return true;
}

void Win32_WaitForInput(uint32_t maxMs) {
    HANDLE event = WaitObject();
    MsgWaitForMultipleObjectsEx(1, &event, maxMs, QS_ALLINPUT, MWMO_ALERTABLE | MWMO_INPUTAVAILABLE);
}

void Win32_TimerStart() {
    Win32State& s = Win32_State();
    if (s.timer) return;
    TIMECAPS caps;
    if (timeGetDevCaps(&caps, sizeof caps) != TIMERR_NOERROR) return;
    UINT resolution = caps.wPeriodMin > kTickMs ? caps.wPeriodMin : kTickMs;
    if (resolution > caps.wPeriodMax) resolution = caps.wPeriodMax;
    timeBeginPeriod(resolution);
    s.timerResolution = resolution;
    s.timer = timeSetEvent(kTickMs, resolution, OnTimer, 0, TIME_PERIODIC);
}

void Win32_TimerStop() {
    Win32State& s = Win32_State();
    if (!s.timer) return;
    timeKillEvent(s.timer);
    timeEndPeriod(s.timerResolution);
    s.timer = 0;
}
