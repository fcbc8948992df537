// zenity's command line for an open or save dialog.
#include "host/sdl2/Zenity.h"

#include <charconv>

namespace {

// --attach came with zenity 3.10 and is unreliable in the GTK 4 rewrite
// (3.91 onwards), where the dialog may open detached or not at all.
bool TakesAttach(const ZenityVersion& v) {
    return v.major == 3 && v.minor >= 10 && v.minor < 91;
}

}  // namespace

ZenityVersion Zenity_ParseVersion(std::string_view text) {
    ZenityVersion version;
    const char* end = text.data() + text.size();
    auto [afterMajor, e1] = std::from_chars(text.data(), end, version.major);
    if (e1 != std::errc() || afterMajor == end || *afterMajor != '.') return {};
    auto [afterMinor, e2] = std::from_chars(afterMajor + 1, end, version.minor);
    if (e2 != std::errc()) return {};
    return version;
}

std::vector<std::string> Zenity_Arguments(const ZenityVersion& version, const DesktopDialogRequest& request) {
    std::vector<std::string> args = {"--file-selection", "--title=" + request.title};
    if (request.save) args.push_back("--save");
    if (!request.proposed.empty()) args.push_back("--filename=" + request.proposed);
    for (const DesktopDialogFilter& filter : DesktopDialog_Filters(request.save)) {
        std::string arg = std::string("--file-filter=") + filter.name + " |";
        for (const char* extension : filter.extensions)
            arg.append(" ").append(DesktopDialog_Pattern(extension));
        args.push_back(arg);
    }
    if (request.x11Window != 0 && TakesAttach(version)) {
        args.push_back("--modal");
        args.push_back("--attach=");
        args.back() += std::to_string(request.x11Window);
    }
    return args;
}
