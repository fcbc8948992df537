// The table of platform backends and the one selector, run once at start-up.
// A backend is chosen by name (PELLUCIDA_HOST or an option); without one the
// desktop backend of the platform is used. Nothing above host/ asks which runs.
#include "host/Host.h"
#include "host/Host_Backend.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

const HostBackend* const kBackends[] = {
#if PELLUCIDA_HAVE_SDL2
    &kSdl2Backend,
#endif
#if PELLUCIDA_HAVE_WIN32
    &kWin32Backend,
#endif
    &kHeadlessBackend,
};

const HostBackend* g_backend = nullptr;

}  // namespace

bool Host_SelectBackend(const char* name) {
    if (!name || !*name) name = std::getenv("PELLUCIDA_HOST");
    if (!name || !*name) {
        g_backend = kBackends[0];
        return true;
    }
    for (const HostBackend* backend : kBackends) {
        if (std::strcmp(backend->name, name) == 0) {
            g_backend = backend;
            return true;
        }
    }
    std::fprintf(stderr, "Unknown host backend \"%s\"; this build has:", name);
    for (const HostBackend* backend : kBackends) std::fprintf(stderr, " %s", backend->name);
    std::fputc('\n', stderr);
    return false;
}

const HostBackend* HostBackend_Current() {
    if (!g_backend && !Host_SelectBackend(nullptr)) g_backend = &kHeadlessBackend;
    return g_backend;
}

const char* Host_GetBackendName() {
    return HostBackend_Current()->name;
}

std::vector<std::string> Host_ListBackends() {
    std::vector<std::string> names;
    for (const HostBackend* backend : kBackends) names.emplace_back(backend->name);
    return names;
}

void HostBackend_ShowMessage(const char* caption, const char* text) {
    if (!text) text = "";
    // Every message also goes to standard error, first: a desktop box can fail
    // without saying so (no display), and a batch run has nobody to click OK,
    // yet "Out of memory" must not vanish before the process ends.
    std::fprintf(stderr, "%s%s\n", caption, text);
    std::fflush(stderr);
    HostBackend_Current()->ShowMessage(caption, text);
}
