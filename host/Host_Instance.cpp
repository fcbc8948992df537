// The single-instance rule as the program sees it: which backends take part,
// what a later start hands over, and the name instances meet under. The lock
// and the listening are the platform's (host/posix).
#include "host/Host_Instance.h"

#include "host/Host_Backend.h"
#include "host/Host_Run.h"

#include <cctype>
#include <filesystem>

std::string HostInstance_Name(const std::string& program, const std::string& display) {
    std::string name = program;
    if (!display.empty()) name += "-" + display;
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '-' && c != '_' && c != '.') c = '_';
    return name;
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
        const std::filesystem::path absolute = std::filesystem::absolute(openPath, ec);
        request.path = ec ? openPath : absolute.lexically_normal().string();
    }
    const std::string name = HostInstance_Name(program, HostOs_DisplayName());
    return HostOs_ClaimInstance("", name, request, backend->InstanceRequested) == kHostInstanceHandedOver;
}
