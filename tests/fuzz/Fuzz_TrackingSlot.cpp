// libFuzzer target for the tracking store's slot reader, in a state folder of
// this run; the step is in FuzzTracking.h.
#include "tests/fuzz/FuzzTracking.h"

#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string folder = Fuzz_TempFolder("slot");
    setenv("PELLUCIDA_STATE_DIR", folder.c_str(), 1);
    Fuzz_TrackingSlot(data, size);
    return 0;
}
