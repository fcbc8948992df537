// libFuzzer target for the Fits reader's memory entry point.
#include "formats/Fits_Read.h"
#include "tests/fuzz/FuzzCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return Fuzz_Reader(&Fits_ReadMemory, data, size);
}
