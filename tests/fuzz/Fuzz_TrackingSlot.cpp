// libFuzzer target for the tracking store's slot reader: each input becomes
// the slot file (0, 0) in a folder of this run, then is read back, with the
// compose conversion chosen by the input's length. Links to other slots find
// nothing there, which is a case the reader must survive too.
#include "image/Tracking.h"
#include "tests/fuzz/FuzzCheck.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

std::string SlotFolder() {
    static const std::string folder = [] {
        auto dir =
            std::filesystem::temp_directory_path() / ("pellucida-fuzz-slot-" + std::to_string(getpid()));
        std::filesystem::create_directories(dir);
        setenv("PELLUCIDA_STATE_DIR", dir.c_str(), 1);
        return dir.string();
    }();
    return folder;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    SlotFolder();
    FILE* slot = std::fopen(Tracking_SlotPath(0, 0).c_str(), "wb");
    if (!slot) return 0;
    std::fwrite(data, 1, size, slot);
    std::fclose(slot);
    ImagePtr image(Tracking_ReadSlot(0, 0, size % 2 == 1));
    Fuzz_CheckImage(image.get());
    return 0;
}
