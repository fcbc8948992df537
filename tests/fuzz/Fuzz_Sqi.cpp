// libFuzzer target for the .sqi decoder; the steps are in FuzzUi.h.
#include "tests/fuzz/FuzzUi.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Fuzz_Sqi(data, size);
    return 0;
}
