// libFuzzer target for the Bmp reader's memory entry point.
#include "formats/Bmp_Read.h"
#include "tests/fuzz/FuzzCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return Fuzz_Reader(&Bmp_ReadMemory, data, size);
}
