// Replays the kept inputs of the archive reader's, the .sqi decoder's and the
// markup reader's fuzzers through the fuzz targets' own steps.
#include "fuzz/FuzzUi.h"
#include "support/FuzzReplay.h"

namespace {

TEST(FuzzCorpus, EveryKeptInputOfTheToolkitReadersRunsSafely) {
    for (auto [name, step] :
         {std::pair{"Archive", &Fuzz_Archive}, {"Sqi", &Fuzz_Sqi}, {"Markup", &Fuzz_Markup}})
        Fuzz_Replay(name, [step](const std::vector<uint8_t>& bytes, const std::filesystem::path&) {
            step(bytes.data(), bytes.size());
        });
}

}  // namespace
