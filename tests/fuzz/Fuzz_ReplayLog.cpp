// libFuzzer target for the processing-log reader; the steps are in FuzzReplayLog.h.
#include "tests/fuzz/FuzzReplayLog.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Fuzz_ReplayLog(data, size);
    return 0;
}
