// The desktop program: `pellucida [IMAGE]`. The host runs the shell's
// handler until the user confirms closing; IMAGE, when given, is opened once
// the main form is up. A start while the program already runs on the same
// desktop hands IMAGE to the running window, brings it forward and ends.
#include "app/Shell.h"
#include "host/Host_Run.h"
#include "host/headless/Headless.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr const char* kUsage = "Usage: pellucida [--host=NAME] [--script=FILE] [IMAGE]\n";

}  // namespace

int main(int argc, char** argv) {
    HostOptions options;
    Shell shell;
    for (int i = 1; i < argc; ++i) {
        if (Host_ParseOption(argv[i], &options)) continue;
        if (std::strcmp(argv[i], "--help") == 0) {
            std::printf("%s%s", kUsage, kHostOptionsHelp);
            return 0;
        }
        if (argv[i][0] == '-' || !shell.openOnStart.empty()) {
            std::fprintf(stderr, "pellucida: unknown argument %s\n%s%s", argv[i], kUsage, kHostOptionsHelp);
            return 2;
        }
        shell.openOnStart = argv[i];
    }
    if (Host_HandOverToRunningInstance("pellucida", options, shell.openOnStart)) {
        std::printf("Pellucida is already running: its window was brought forward.\n");
        return 0;
    }
    Shell_Install(&shell);
    Headless_SetAppCommandHandler(Shell_ScriptCommand);
    Headless_SetAppBusyCheck(Shell_Busy);
    const int status = Host_Run("pellucida", options, Shell_OnAppEvent);
    Shell_Install(nullptr);
    return status;
}
