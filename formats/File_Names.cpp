#include "formats/File_Names.h"

#include <strings.h>
#include <cstring>

bool File_HasExtension(const char* name, const char* extension) {
    if (!name || !extension) return false;
    const char* dot = std::strrchr(name, '.');
    if (!dot) return false;
    return strcasecmp(dot + 1, extension) == 0;
}

bool File_IsOpenableName(const char* name) {
    for (const char* e : {"jpg", "jpeg", "png", "fits", "tiff", "tif", "crw", "bmp", "fts", "fit"})
        if (File_HasExtension(name, e)) return true;
    return false;
}

bool File_IsSaveableName(const char* name) {
    if (File_HasExtension(name, "jpg")) return true;
    for (const char* e : {"jpeg", "jps", "tiff", "png", "tif"})
        if (File_HasExtension(name, e)) return true;
    return false;
}

std::string File_DefaultSaveName(const char* currentName) {
    if (!currentName || !*currentName) return "NewFile.tiff";
    std::string name = currentName;
    for (const char* e : {"fits", "fts", "fit"}) {
        if (File_HasExtension(currentName, e)) {
            name.erase(name.rfind('.') + 1);
            name += "tiff";
            break;
        }
    }
    return name;
}

SaveFormat File_SaveFormatFor(const char* name) {
    for (const char* e : {"jpg", "jpeg", "jps"})
        if (File_HasExtension(name, e)) return SaveFormat::kJpeg;
    if (File_HasExtension(name, "png")) return SaveFormat::kPng;
    return SaveFormat::kTiff;
}
