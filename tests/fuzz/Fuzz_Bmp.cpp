// libFuzzer target for the Bmp reader's memory entry point.
#include "formats/Bmp_Read.h"
#include "tests/fuzz/FuzzCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ImagePtr image(Bmp_ReadMemory(data, size));
    Fuzz_CheckImage(image.get());
    return 0;
}
