// libFuzzer target for the history's state-file reader: each input becomes a
// state file in a folder of this run and is read back whole. What it accepts
// must keep the fuzz targets' promises, for the image and for its mask, and
// agree with its own header.
#include "image/History.h"
#include "tests/fuzz/FuzzCheck.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

namespace {

std::string StatePath() {
    static const std::string path = [] {
        auto dir =
            std::filesystem::temp_directory_path() / ("pellucida-fuzz-history-" + std::to_string(getpid()));
        std::filesystem::create_directories(dir);
        return (dir / "state.pst").string();
    }();
    return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string path = StatePath();
    FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);
    HistoryState state;
    ImagePtr image, mask;
    if (!History_ReadFile(path, &state, &image, &mask)) {
        if (image || mask) __builtin_trap();  // a refusal hands out nothing
        return 0;
    }
    Fuzz_CheckImage(image.get());
    Fuzz_CheckImage(mask.get());
    if (!image || image->width != state.width || image->height != state.height) __builtin_trap();
    if (bool(image->mono) != state.mono || (mask != nullptr) != state.hasMask) __builtin_trap();
    if (mask && (mask->width != image->width || mask->height != image->height)) __builtin_trap();
    return 0;
}
