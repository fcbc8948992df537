// The 16-bit TIFF writer and the TIFF reader on the 6000 x 4000 RGB sky at 30
// bits, beside the same 144 MB written by a single fwrite of a ready buffer
// (the disk's speed, file creation included) and read back by a single fread.
// The writer's extra cost over the bare write is its packing of 72 million
// samples to 16 bits (memory speed).
//
// Files go to PELLUCIDA_STATE_DIR when set, otherwise to the system's
// temporary folder, and are removed at the end.
#include "Bench_SkyPlanes.h"

#include "formats/Tiff_Read.h"
#include "formats/Tiff_Write.h"
#include "image/Image.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

std::string BenchFile(const char* name) {
    std::filesystem::path dir = std::filesystem::temp_directory_path();
    if (const char* state = std::getenv("PELLUCIDA_STATE_DIR"); state && *state) dir = state;
    return (dir / name).string();
}

constexpr size_t kTiffBytes = size_t{kBenchSkyWidth} * kBenchSkyHeight * 6;

void BM_TiffWrite(benchmark::State& state) {
    const ImageBuffer& sky = Bench_SkyImage();
    const std::string path = BenchFile("pellucida-bench.tiff");
    for (auto _ : state) {
        if (Tiff_Write(&sky, path.c_str()) != 1) state.SkipWithError("write failed");
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kTiffBytes));
    state.SetLabel(Bench_SkySource());
    std::filesystem::remove(path);
}

void BM_TiffWriteBareBytes(benchmark::State& state) {
    std::vector<uint8_t> bytes(kTiffBytes, 0x5A);
    const std::string path = BenchFile("pellucida-bench-bare.bin");
    for (auto _ : state) {
        FILE* file = std::fopen(path.c_str(), "wb");
        if (!file || std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size())
            state.SkipWithError("write failed");
        if (file) std::fclose(file);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kTiffBytes));
    std::filesystem::remove(path);
}

void BM_TiffRead(benchmark::State& state) {
    const std::string path = BenchFile("pellucida-bench-read.tiff");
    if (Tiff_Write(&Bench_SkyImage(), path.c_str()) != 1) state.SkipWithError("write failed");
    for (auto _ : state) {
        ImagePtr image(Tiff_Read(path.c_str()));
        if (!image) state.SkipWithError("read failed");
        benchmark::DoNotOptimize(image.get());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kTiffBytes));
    std::filesystem::remove(path);
}

void BM_TiffReadBareBytes(benchmark::State& state) {
    const std::string path = BenchFile("pellucida-bench-read.tiff");
    if (Tiff_Write(&Bench_SkyImage(), path.c_str()) != 1) state.SkipWithError("write failed");
    std::vector<uint8_t> bytes(kTiffBytes + 4096);
    for (auto _ : state) {
        FILE* file = std::fopen(path.c_str(), "rb");
        if (!file) state.SkipWithError("open failed");
        if (file) {
            benchmark::DoNotOptimize(std::fread(bytes.data(), 1, bytes.size(), file));
            std::fclose(file);
        }
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kTiffBytes));
    std::filesystem::remove(path);
}

}  // namespace

BENCHMARK(BM_TiffWrite)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TiffWriteBareBytes)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TiffRead)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TiffReadBareBytes)->Unit(benchmark::kMillisecond)->UseRealTime();
