// libFuzzer target for the Tiff reader's memory entry point.
#include "formats/Tiff_Read.h"
#include "tests/fuzz/FuzzCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return Fuzz_Reader(&Tiff_ReadMemory, data, size);
}
