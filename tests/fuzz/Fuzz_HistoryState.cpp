// libFuzzer target for the history's state-file reader: each input becomes a
// state file in a folder of this run and is read back whole. What it accepts
// must keep the fuzz targets' promises, for the image and for its mask, and
// agree with its own header.
#include "image/History.h"
#include "tests/fuzz/FuzzCheck.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string path = Fuzz_TempFolder("history") + "/state.pst";
    if (!Fuzz_WriteFile(path, data, size)) return 0;
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
