// The SDL2 backend's open and save dialogs: the desktop portal's file chooser
// first, zenity where no portal answers, and a message saying what to install
// where neither exists. SDL2 has no file dialogs of its own.
#include "host/Host_Backend.h"
#include "host/Host_Threads.h"
#include "host/sdl2/Portal_FileChooser.h"
#include "host/sdl2/Sdl2_Private.h"
#include "host/sdl2/Zenity.h"

#include <SDL_syswm.h>

namespace {

constexpr const char* kOpenTitle = "Open Image";
constexpr const char* kSaveTitle = "Save Image";
constexpr const char* kNoFileDialog =
    "Pellucida cannot show a file dialog: no desktop portal and no zenity were found.\n"
    "Please install xdg-desktop-portal with a backend for your desktop (xdg-desktop-portal-gtk, "
    "xdg-desktop-portal-kde) or zenity.\n";

// The parent window for the dialog to sit on; 0 when not on X11.
uint64_t X11Window() {
    SDL_Window* window = Sdl2_State().window;
    SDL_SysWMinfo info;
    SDL_VERSION(&info.version);
    if (!window || !SDL_GetWindowWMInfo(window, &info)) return 0;
#if defined(SDL_VIDEO_DRIVER_X11)
    if (info.subsystem == SDL_SYSWM_X11) return uint64_t(info.info.x11.window);
#endif
    return 0;
}

}  // namespace

bool Sdl2_FileDialog(bool save, const std::string& current, std::string* chosen) {
    DesktopDialogRequest request;
    request.save = save;
    request.title = save ? kSaveTitle : kOpenTitle;
    request.proposed = current;
    request.x11Window = X11Window();

    DesktopDialogResult result = Portal_FileDialog(request, chosen);
    if (result == DesktopDialogResult::kUnavailable) result = Zenity_FileDialog(request, chosen);
    if (result == DesktopDialogResult::kUnavailable)
        HostBackend_ShowMessage(kHostMessageCaption, kNoFileDialog);
    return result == DesktopDialogResult::kChosen;
}
