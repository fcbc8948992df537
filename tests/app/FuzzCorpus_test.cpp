// Replays the kept inputs of the processing-log reader's fuzzer through the
// fuzz target's own step.
#include "fuzz/FuzzReplayLog.h"
#include "support/FuzzReplay.h"

namespace {

TEST(FuzzCorpus, EveryKeptLogRunsSafely) {
    Fuzz_Replay("ReplayLog", [](const std::vector<uint8_t>& bytes, const std::filesystem::path&) {
        Fuzz_ReplayLog(bytes.data(), bytes.size());
    });
}

}  // namespace
