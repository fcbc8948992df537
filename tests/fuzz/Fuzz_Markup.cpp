// libFuzzer target for the form markup reader and the widget tree it builds; the steps are in FuzzUi.h.
#include "tests/fuzz/FuzzUi.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Fuzz_Markup(data, size);
    return 0;
}
