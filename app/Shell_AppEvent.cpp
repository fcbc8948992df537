// The application handler: what each host event means to the program. Input,
// ticks and resizes go to the toolkit; the start event starts the UI; a close
// request asks first; a dropped file is opened.
#include "app/Shell.h"

#include "host/Host.h"
#include "ui/MessageBox.h"
#include "ui/Toolkit_AppEvent.h"
#include "ui/Toolkit_Dispatch.h"

namespace {

Shell* g_shell = nullptr;  // the handler has no user pointer

void OnCloseAnswer(Toolkit*, uint32_t button, void* user) {
    if (button == 0) static_cast<Shell*>(user)->quit = 1;
}

void AskClose(Shell* shell) {
    MessageBox_Show(shell->ui.get(), kCloseTitle, kCloseText, kMessageBoxError, OnCloseAnswer, shell, 2,
                    kCloseButton, kCancelButton);
}

}  // namespace

void Shell_Install(Shell* shell) {
    g_shell = shell;
}

Shell* Shell_Get() {
    return g_shell;
}

int Shell_OnAppEvent(AppEvent* event) {
    Shell* shell = g_shell;
    if (!shell) return 1;
    switch (event->kind) {
        case kAppEventStart:
            Shell_StartUi(shell);
            break;
        case kAppEventCloseRequested:
            if (!shell->quit && shell->ui)
                AskClose(shell);
            else
                shell->quit = 1;  // no UI to ask with, or already confirmed
            break;
        case kAppEventFileDropped: {
            std::string path;
            Host_Call("event", "Event_TakeDroppedFile", &path);
            // A drop while the splash or a box is up waits for nothing: it is refused quietly.
            if (!path.empty() && shell->mainFormUp && shell->ui->currentForm == shell->ui->root.get())
                Shell_OpenPath(shell, path);
            break;
        }
        default:
            break;
    }
    if (shell->ui) {
        // The toolkit takes a close request for a stop; here it only draws the question.
        if (event->kind == kAppEventCloseRequested)
            Toolkit_Dispatch(shell->ui.get());
        else
            Toolkit_OnAppEvent(shell->ui.get(), event);
    }
    if (shell->quit) {
        Shell_TearDownUi(shell);
        return shell->quit;
    }
    return 0;
}
