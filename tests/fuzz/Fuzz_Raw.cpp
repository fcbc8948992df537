// libFuzzer target for the raw-frame reader. Raw frames are recognised by their
// exact size alone (6.5 to 15.6 MB), which no mutated input reaches: the first
// byte picks one of the known sizes (or a size one byte off), and the rest of
// the input is repeated to fill it, so the unpacking sees arbitrary content.
#include "formats/Raw_Read.h"
#include "tests/fuzz/FuzzCheck.h"

#include <vector>

constexpr size_t kSizes[] = {6553440,  6573120,  7710960,  9219600, 10341600,
                             10383120, 12945240, 15636240, 15467760};

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const size_t pick = data[0] % (2 * std::size(kSizes));
    size_t frameSize = kSizes[pick / 2];
    if (pick % 2) frameSize += (data[1] & 1) ? 1 : static_cast<size_t>(-1);
    static std::vector<uint8_t> frame;
    frame.resize(frameSize);
    for (size_t i = 0; i < frameSize; ++i) frame[i] = data[1 + i % (size - 1)];
    return Fuzz_Reader(&Raw_ReadMemory, frame.data(), frame.size());
}
