// libFuzzer target for the Jpeg reader's memory entry point.
#include "formats/Jpeg_Read.h"
#include "tests/fuzz/FuzzCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return Fuzz_Reader(&Jpeg_ReadMemory, data, size);
}
