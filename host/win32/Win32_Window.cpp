// Win32 backend, window side: the "APPL" window class and the main window
// titled "Pellucida" (its client area 800 x 480, centred on the desktop, then
// maximised), the DIB-section framebuffer (32-bit BI_BITFIELDS, rows top
// down) copied with BitBlt, the arrow and hourglass cursors, and the plain
// message box.
#include "host/Host_Backend.h"
#include "host/Host_Threads.h"
#include "host/Host_Window.h"
#include "host/win32/Win32_Private.h"

#include <cstdlib>

namespace {

constexpr int kInitialClientWidth = 800;
constexpr int kInitialClientHeight = 480;
constexpr int kIconResource = 101;
constexpr LONG kPixelsPerMetre = 3760;
constexpr const char* kCouldNotCreateWindow = "Could not create window\n";
constexpr const char* kCouldNotObtainContext = "Could not obtain window device context\n";

struct Win32Framebuffer {
    HDC memoryDc = nullptr;
    HBITMAP section = nullptr;
    HGDIOBJ previous = nullptr;
};

// BITMAPINFO with room for the three channel masks.
struct BitfieldsInfo {
    BITMAPINFOHEADER header;
    DWORD masks[3];
};

void ShowMessage(const char* caption, const char* text) {
    MessageBoxA(Win32_State().window, text, caption, MB_OK);
}

[[noreturn]] void WindowFailed(const char* message) {
    HostBackend_ShowMessage(kHostMessageCaption, message);
    std::exit(0);
}

void RegisterWindowClass(HINSTANCE instance) {
    WNDCLASSA windowClass{};
    windowClass.style = CS_HREDRAW | CS_VREDRAW;
    windowClass.lpfnWndProc = Win32_WindowProc;
    windowClass.hInstance = instance;
    windowClass.hIcon = LoadIconA(instance, MAKEINTRESOURCEA(kIconResource));
    windowClass.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
    windowClass.lpszClassName = kWin32WindowClass;
    RegisterClassA(&windowClass);
}

void CreateMainWindow() {
    Win32State& s = Win32_State();
    s.instance = GetModuleHandleA(nullptr);
    RegisterWindowClass(s.instance);

    // The first guess of the outer size; the client area is measured and the
    // window corrected below, whatever the frame's real sizes are.
    RECT rect{0, 0, 0, 0};
    rect.right = GetSystemMetrics(SM_CXBORDER) + (kInitialClientWidth - 1) + 2 * GetSystemMetrics(SM_CXFRAME);
    rect.bottom = GetSystemMetrics(SM_CYFRAME) + (kInitialClientHeight - 1 + GetSystemMetrics(SM_CYBORDER)) +
                  GetSystemMetrics(SM_CYCAPTION) + GetSystemMetrics(SM_CYFRAME);
    AdjustWindowRect(&rect, WS_OVERLAPPEDWINDOW, TRUE);
    const int width = rect.right - rect.left;
    const int height = rect.bottom - rect.top;
    s.window = CreateWindowExA(0, kWin32WindowClass, kWin32WindowTitle, WS_OVERLAPPEDWINDOW, CW_USEDEFAULT,
                               CW_USEDEFAULT, width, height, nullptr, nullptr, s.instance, nullptr);
    if (!s.window) WindowFailed(kCouldNotCreateWindow);
    s.windowDc = GetDC(s.window);
    if (!s.windowDc) WindowFailed(kCouldNotObtainContext);

    MoveWindow(s.window, 0, 0, width, height, FALSE);
    RECT client;
    GetClientRect(s.window, &client);
    const int outerW = width + (kInitialClientWidth - (client.right - client.left));
    const int outerH = height + (kInitialClientHeight - (client.bottom - client.top));
    RECT desktop;
    SystemParametersInfoA(SPI_GETWORKAREA, 0, &desktop, 0);
    const int x = desktop.left + (desktop.right - desktop.left - outerW) / 2;
    const int y = desktop.top + (desktop.bottom - desktop.top - outerH) / 2;
    MoveWindow(s.window, x, y, outerW, outerH, FALSE);
    HostWindow_OnCreated(kInitialClientWidth, kInitialClientHeight);

    UpdateWindow(s.window);
    ShowWindow(s.window, SW_MAXIMIZE);
    SetFocus(s.window);
    // Maximising sent WM_SIZE: the first framebuffer takes the maximised size.
    GetClientRect(s.window, &client);
    HostWindow_OnCreated(uint32_t(client.right - client.left), uint32_t(client.bottom - client.top));
}

void DestroyMainWindow() {
    Win32State& s = Win32_State();
    HostWindow_OnDestroyed();
    if (s.window) {
        if (s.windowDc) ReleaseDC(s.window, s.windowDc);
        DestroyWindow(s.window);
    }
    s.window = nullptr;
    s.windowDc = nullptr;
}

bool FramebufferCreate(VideoState* video) {
    Win32State& s = Win32_State();
    if (!s.window || !s.windowDc) return false;
    BitfieldsInfo info{};
    info.header.biSize = sizeof(BITMAPINFOHEADER);
    info.header.biWidth = LONG(video->pixelsPerRow);
    info.header.biHeight = -LONG(video->rows);  // rows run top down
    info.header.biPlanes = 1;
    info.header.biBitCount = 32;
    info.header.biCompression = BI_BITFIELDS;
    info.header.biSizeImage = video->pixelsPerRow * video->rows * 4;
    info.header.biXPelsPerMeter = kPixelsPerMetre;
    info.header.biYPelsPerMeter = kPixelsPerMetre;
    info.masks[0] = 0x00FF0000;
    info.masks[1] = 0x0000FF00;
    info.masks[2] = 0x000000FF;

    auto* fb = new Win32Framebuffer();
    void* bits = nullptr;
    fb->memoryDc = CreateCompatibleDC(s.windowDc);
    if (fb->memoryDc)
        fb->section = CreateDIBSection(fb->memoryDc, reinterpret_cast<BITMAPINFO*>(&info), DIB_RGB_COLORS,
                                       &bits, nullptr, 0);
    if (!fb->section) {
        if (fb->memoryDc) DeleteDC(fb->memoryDc);
        delete fb;
        return false;
    }
    fb->previous = SelectObject(fb->memoryDc, fb->section);
    video->platform = fb;
    video->pixels = static_cast<uint32_t*>(bits);
    return true;
}

void FramebufferDestroy(VideoState* video) {
    auto* fb = static_cast<Win32Framebuffer*>(video->platform);
    if (fb) {
        SelectObject(fb->memoryDc, fb->previous);
        DeleteObject(fb->section);
        DeleteDC(fb->memoryDc);
        delete fb;
    }
    video->platform = nullptr;
    video->pixels = nullptr;
}

void Present(VideoState* video) {
    Win32State& s = Win32_State();
    auto* fb = static_cast<Win32Framebuffer*>(video->platform);
    if (!s.windowDc || !fb) return;
    BitBlt(s.windowDc, 0, 0, int(video->width), int(video->height), fb->memoryDc, 0, 0, SRCCOPY);
}

void SetCursor(HostCursor cursor) {
    ::SetCursor(LoadCursorA(nullptr, cursor == kHostCursorWait ? IDC_WAIT : IDC_ARROW));
}

double DisplayScale() {
    return 1.0;
}

}  // namespace

Win32State& Win32_State() {
    static Win32State state;
    return state;
}

extern const HostBackend kWin32Backend = {
    "win32",
    "desktop window through Win32",
    CreateMainWindow,
    DestroyMainWindow,
    FramebufferCreate,
    FramebufferDestroy,
    Present,
    SetCursor,
    Win32_MessagePending,
    Win32_DispatchOneMessage,
    Win32_WaitForInput,
    Win32_TimerStart,
    Win32_TimerStop,
    ShowMessage,
    Win32_FileDialog,
    Win32_InstanceRequested,
    DisplayScale,
};
