// The image types the desktop file dialogs offer. The host cannot ask the
// format layer, so the lists mirror its readers and writers: FITS, TIFF, PNG,
// JPEG, BMP and raw frames are read; TIFF, PNG and JPEG (also as a stereo
// pair, .jps) are written.
#include "host/sdl2/DesktopDialog.h"

#include <strings.h>
#include <cctype>
#include <iterator>

namespace {

constexpr const char* kReadable[] = {"fit", "fits", "fts", "tif", "tiff", "png", "jpg", "jpeg", "bmp", "crw"};
constexpr const char* kFits[] = {"fit", "fits", "fts"};
constexpr const char* kTiff[] = {"tif", "tiff"};
constexpr const char* kPng[] = {"png"};
constexpr const char* kJpeg[] = {"jpg", "jpeg"};
constexpr const char* kJpegWritten[] = {"jpg", "jpeg", "jps"};
constexpr const char* kBmp[] = {"bmp"};
constexpr const char* kRaw[] = {"crw"};
constexpr const char* kAll[] = {"*"};

constexpr DesktopDialogFilter kOpenFilters[] = {
    {"Images", kReadable}, {"FITS", kFits}, {"TIFF", kTiff},      {"PNG", kPng},
    {"JPEG", kJpeg},       {"BMP", kBmp},   {"Raw frames", kRaw}, {"All Files", kAll},
};
constexpr DesktopDialogFilter kSaveFilters[] = {
    {"TIFF", kTiff},
    {"PNG", kPng},
    {"JPEG", kJpegWritten},
};

}  // namespace

std::span<const DesktopDialogFilter> DesktopDialog_Filters(bool save) {
    if (save) return kSaveFilters;
    return kOpenFilters;
}

std::string DesktopDialog_Pattern(const char* extension) {
    if (extension[0] == '*' && extension[1] == 0) return "*";
    std::string pattern = "*.";
    for (const char* c = extension; *c; ++c) {
        const unsigned char u = static_cast<unsigned char>(*c);
        if (std::isalpha(u)) {
            pattern += '[';
            pattern += char(std::tolower(u));
            pattern += char(std::toupper(u));
            pattern += ']';
        } else {
            pattern += *c;
        }
    }
    return pattern;
}

int DesktopDialog_SaveFilterFor(const std::string& name) {
    const size_t dot = name.rfind('.');
    if (dot == std::string::npos || name.find('/', dot) != std::string::npos) return -1;
    for (size_t i = 0; i < std::size(kSaveFilters); ++i)
        for (const char* e : kSaveFilters[i].extensions)
            if (strcasecmp(e, name.c_str() + dot + 1) == 0) return int(i);
    return -1;
}

void DesktopDialog_SplitName(const std::string& name, std::string* folder, std::string* base) {
    const size_t slash = name.rfind('/');
    if (slash == std::string::npos) {
        folder->clear();
        *base = name;
        return;
    }
    *folder = slash == 0 ? std::string("/") : name.substr(0, slash);
    *base = name.substr(slash + 1);
}
