// libFuzzer target for the Png reader's memory entry point.
#include "formats/Png_Read.h"
#include "tests/fuzz/FuzzCheck.h"

// A PNG can rightly announce hundreds of megapixels in a few kilobytes (deflate
// packs a flat image about 1000:1), and the reader then allocates them. Such
// sizes teach the fuzzer nothing new and would only hit its memory limit.
constexpr uint64_t kMaxFuzzPixels = uint64_t{1} << 22;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size >= 24) {
        auto be32 = [](const uint8_t* p) { return uint64_t{p[0]} << 24 | p[1] << 16 | p[2] << 8 | p[3]; };
        if (be32(data + 16) * be32(data + 20) > kMaxFuzzPixels) return 0;
    }
    return Fuzz_Reader(&Png_ReadMemory, data, size);
}
