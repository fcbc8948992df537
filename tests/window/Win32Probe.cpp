// Looks at the program's window from outside, as a user's desktop would:
//   win32probe wait SECONDS          the window of class "APPL" exists
//   win32probe size                  prints its client size as WxH
//   win32probe compare PNG           its client pixels equal the picture's
//   win32probe click X Y             a left click posted at a client position
//   win32probe char CODE             a character typed
//   win32probe close                 WM_CLOSE, as the window's close button sends
// Exit status 0 when the check holds.
#include <windows.h>

#include <lodepng.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

HWND FindMain() {
    return FindWindowA("APPL", "Pellucida");
}

bool ClientSize(HWND window, int* width, int* height) {
    RECT client;
    if (!GetClientRect(window, &client)) return false;
    *width = client.right - client.left;
    *height = client.bottom - client.top;
    return true;
}

// The client area copied out of the window into top-down 0x00RRGGBB words.
std::vector<uint32_t> ReadBack(HWND window, int width, int height) {
    std::vector<uint32_t> pixels(size_t(width) * height);
    HDC windowDc = GetDC(window);
    HDC memoryDc = CreateCompatibleDC(windowDc);
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    HBITMAP section = CreateDIBSection(memoryDc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    HGDIOBJ previous = SelectObject(memoryDc, section);
    BitBlt(memoryDc, 0, 0, width, height, windowDc, 0, 0, SRCCOPY);
    GdiFlush();
    for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<uint32_t*>(bits)[i] & 0xFFFFFF;
    SelectObject(memoryDc, previous);
    DeleteObject(section);
    DeleteDC(memoryDc);
    ReleaseDC(window, windowDc);
    return pixels;
}

int Compare(HWND window, const char* png) {
    std::vector<unsigned char> rgba;
    unsigned w = 0, h = 0;
    if (lodepng::decode(rgba, w, h, png) != 0) {
        std::printf("cannot read %s\n", png);
        return 2;
    }
    int width, height;
    ClientSize(window, &width, &height);
    if (unsigned(width) != w || unsigned(height) != h) {
        std::printf("window %dx%d, picture %ux%u\n", width, height, w, h);
        return 1;
    }
    const std::vector<uint32_t> pixels = ReadBack(window, width, height);
    size_t differ = 0;
    for (size_t i = 0; i < pixels.size(); ++i) {
        const uint32_t expected =
            (uint32_t(rgba[i * 4]) << 16) | (uint32_t(rgba[i * 4 + 1]) << 8) | rgba[i * 4 + 2];
        if (pixels[i] != expected && differ++ == 0)
            std::printf("first difference at (%zu, %zu): window %06X, picture %06X\n", i % width, i / width,
                        unsigned(pixels[i]), unsigned(expected));
    }
    std::printf("%zu of %zu pixels differ\n", differ, pixels.size());
    return differ == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    const char* command = argv[1];
    if (std::strcmp(command, "wait") == 0 && argc == 3) {
        for (int i = 0; i < std::atoi(argv[2]) * 10; ++i) {
            if (FindMain()) return 0;
            Sleep(100);
        }
        return 1;
    }
    HWND window = FindMain();
    if (!window) {
        std::printf("no window\n");
        return 1;
    }
    if (std::strcmp(command, "size") == 0) {
        int width, height;
        ClientSize(window, &width, &height);
        std::printf("%dx%d\n", width, height);
        return 0;
    }
    if (std::strcmp(command, "compare") == 0 && argc == 3) return Compare(window, argv[2]);
    if (std::strcmp(command, "click") == 0 && argc == 4) {
        const LPARAM at = MAKELPARAM(std::atoi(argv[2]), std::atoi(argv[3]));
        PostMessageA(window, WM_MOUSEMOVE, 0, at);
        PostMessageA(window, WM_LBUTTONDOWN, MK_LBUTTON, at);
        PostMessageA(window, WM_LBUTTONUP, 0, at);
        return 0;
    }
    if (std::strcmp(command, "char") == 0 && argc == 3) {
        PostMessageA(window, WM_CHAR, WPARAM(std::atoi(argv[2])), 0);
        return 0;
    }
    if (std::strcmp(command, "close") == 0) {
        PostMessageA(window, WM_CLOSE, 0, 0);
        return 0;
    }
    return 2;
}
