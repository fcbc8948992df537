// libFuzzer target for the tracking store's slot reader, in a state folder of
// this run; the step is in FuzzTracking.h.
#include "tests/fuzz/FuzzTracking.h"

#include <unistd.h>

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
    Fuzz_TrackingSlot(data, size);
    return 0;
}
