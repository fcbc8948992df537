// The single-instance rule on Windows: a later start looks for the running
// program's top-level window (class "APPL", title "Pellucida"), hands it the
// file to open, brings it to the foreground, restores it, and ends. Nothing
// is held: a crashed run leaves no window, so the next start is first.
#include "host/Host_Instance.h"
#include "host/Host_Window.h"
#include "host/win32/Win32_Private.h"

#include <cstdio>

namespace {

constexpr UINT kHandOverTimeoutMs = 5000;

}  // namespace

HostInstanceClaim HostOs_ClaimInstance(const std::string&, const std::string&,
                                       const HostInstanceRequest& request, HostInstanceRequestFn) {
    HWND running = FindWindowA(kWin32WindowClass, kWin32WindowTitle);
    if (!running) return kHostInstanceFirst;
    if (!request.path.empty()) {
        COPYDATASTRUCT data{};
        data.dwData = kWin32OpenRequest;
        data.cbData = DWORD(request.path.size());
        data.lpData = const_cast<char*>(request.path.data());
        DWORD_PTR answer = 0;
        SendMessageTimeoutA(running, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&data), SMTO_ABORTIFHUNG,
                            kHandOverTimeoutMs, &answer);
    }
    // Windows lets a process that is being started by the user's action bring
    // another window forward.
    SetForegroundWindow(running);
    ShowWindow(running, SW_RESTORE);
    return kHostInstanceHandedOver;
}

void HostOs_ReleaseInstance() {}

std::string HostOs_InstanceFolder() {
    return {};
}

std::string HostOs_DisplayName() {
    return {};
}

std::string HostOs_StartupId() {
    return {};
}

void HostOs_ForgetStartupId() {}

void Win32_InstanceRequested(const HostInstanceRequest& request) {
    std::printf("Brought forward by another start%s%s\n", request.path.empty() ? "" : " to open ",
                request.path.c_str());
    std::fflush(stdout);
    if (!request.path.empty()) HostWindow_OnDrop(request.path.c_str());
}
