// The portal's names for things: request object paths and file URIs.
#include "host/sdl2/Portal_FileChooser.h"

#include "host/Host_Text.h"

#include <algorithm>

std::string Portal_RequestPath(std::string_view uniqueName, std::string_view token) {
    std::string sender(uniqueName.substr(uniqueName.starts_with(':') ? 1 : 0));
    std::replace(sender.begin(), sender.end(), '.', '_');
    return "/org/freedesktop/portal/desktop/request/" + sender + "/" + std::string(token);
}

std::optional<std::string> Portal_PathFromUri(std::string_view uri) {
    constexpr std::string_view kScheme = "file://";
    if (!uri.starts_with(kScheme)) return std::nullopt;
    uri.remove_prefix(kScheme.size());
    const size_t slash = uri.find('/');
    if (slash == std::string_view::npos) return std::nullopt;
    const std::string_view host = uri.substr(0, slash);
    if (!host.empty() && host != "localhost") return std::nullopt;  // not on this machine

    std::string path;
    for (size_t i = slash; i < uri.size(); ++i) {
        if (uri[i] != '%') {
            path += uri[i];
            continue;
        }
        const int high = i + 2 < uri.size() ? Host_HexDigit(uri[i + 1]) : -1;
        const int low = high >= 0 ? Host_HexDigit(uri[i + 2]) : -1;
        if (low < 0 || (high == 0 && low == 0)) return std::nullopt;
        path += char(high * 16 + low);
        i += 2;
    }
    return path;
}
