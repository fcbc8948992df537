// The start-up path to the archive: the file "resources" in the program's folder.
#include "ui/archive/Resources_Open.h"

#include "host/Host_Os.h"
#include "host/Host_Threads.h"

#include <cstdlib>

std::string Resources_DefaultPath() {
    return Host_GetProgramDir() + kResourcesFileName;
}

std::unique_ptr<ResourceArchive> Resources_OpenPath(const char* path, int* code) {
    auto archive = std::make_unique<ResourceArchive>();
    const int result = ResourceArchive_AddVolume(archive.get(), path);
    if (code) *code = result;
    if (result != kResourceOk) return nullptr;
    return archive;
}

std::unique_ptr<ResourceArchive> Resources_Open() {
    const std::string path = Resources_DefaultPath();
    auto archive = Resources_OpenPath(path.c_str(), nullptr);
    if (!archive) {
        // Without its forms and icons the program cannot show anything; it
        // says so and ends quietly.
        Host_ShowMessage(kResourcesMissingMessage);
        std::exit(0);
    }
    return archive;
}
