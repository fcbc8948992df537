#include "host/Host_Run.h"

#include "host/Host_Backend.h"
#include "host/Host_Instance.h"

#include "host/Host_Path.h"
#include "host/headless/Headless.h"

#include <cstdio>
#include <cstring>
#include <filesystem>

bool Host_ParseOption(const char* arg, HostOptions* options) {
    if (std::strncmp(arg, "--host=", 7) == 0) {
        options->host = arg + 7;
        return true;
    }
    if (std::strncmp(arg, "--script=", 9) == 0) {
        options->script = arg + 9;
        return true;
    }
    return false;
}

bool Host_HandOverToRunningInstance(const char* program, const HostOptions& options,
                                    const std::string& openPath) {
    if (!Host_SelectBackend(options.host.c_str())) return false;  // Host_Run says why
    const HostBackend* backend = HostBackend_Current();
    // Only a desktop window takes part: headless runs (tests, batch work) are
    // many at a time by design.
    if (!backend->InstanceRequested) return false;
    HostInstanceRequest request;
    request.startupId = HostOs_StartupId();
    if (!openPath.empty()) {
        // The running instance has a working folder of its own.
        std::error_code ec;
        const std::filesystem::path absolute = std::filesystem::absolute(Host_Path(openPath), ec);
        request.path = ec ? openPath : Host_PathText(absolute.lexically_normal());
    }
    const std::string name = HostInstance_Name(program, HostOs_DisplayName());
    return HostOs_ClaimInstance("", name, request, backend->InstanceRequested) == kHostInstanceHandedOver;
}

int Host_Run(const char* program, const HostOptions& options, AppEventHandler handler) {
    if (!Host_SelectBackend(options.host.c_str())) return 2;
    if (!options.script.empty()) {
        if (std::strcmp(Host_GetBackendName(), "headless") != 0) {
            std::fprintf(stderr, "%s: --script needs the headless backend (--host=headless)\n", program);
            return 2;
        }
        if (!Headless_LoadScript(options.script.c_str())) return 2;
    }
    Host_CreateMainWindow();
    if (!Host_Init(handler)) return 1;
    Host_MainLoop();
    Host_Shutdown();
    Host_DestroyMainWindow();
    HostOs_ReleaseInstance();
    return 0;
}
