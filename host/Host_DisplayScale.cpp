#include "host/Host_DisplayScale.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

namespace {

constexpr double kMinScale = 1.0;
constexpr double kMaxScale = 4.0;
// Densities outside this range are a broken monitor description, not a screen.
constexpr double kMinPlausibleDpi = 50.0;
constexpr double kMaxPlausibleDpi = 1000.0;

double Clamped(double scale) {
    return std::clamp(scale, kMinScale, kMaxScale);
}

}  // namespace

double HostDisplay_ChooseScale(const char* gdkScale, double xftDpi, double screenDpi) {
    if (gdkScale && *gdkScale) {
        char* end = nullptr;
        const long factor = std::strtol(gdkScale, &end, 10);
        if (*end == '\0' && factor >= 1) return Clamped(double(factor));
    }
    if (xftDpi > 0) return Clamped(std::round(xftDpi / kHostReferenceDpi * 4) / 4);
    if (screenDpi >= kMinPlausibleDpi && screenDpi <= kMaxPlausibleDpi)
        return Clamped(std::floor(screenDpi / kHostReferenceDpi * 2 + 0.25) / 2);
    return kMinScale;
}

double HostDisplay_XftDpi(std::string_view resources) {
    constexpr std::string_view kName = "Xft.dpi:";
    for (size_t start = 0; start < resources.size();) {
        size_t end = resources.find('\n', start);
        if (end == std::string_view::npos) end = resources.size();
        std::string_view line = resources.substr(start, end - start);
        start = end + 1;
        if (line.substr(0, kName.size()) != kName) continue;
        const std::string value(line.substr(kName.size()));
        char* stop = nullptr;
        const double dpi = std::strtod(value.c_str(), &stop);
        while (*stop == ' ' || *stop == '\t') ++stop;
        return stop != value.c_str() && *stop == '\0' && dpi > 0 ? dpi : 0.0;
    }
    return 0.0;
}
