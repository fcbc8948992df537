// The FITS reader on the two files the comparison tools read: the 6000 x 4000
// RGB sky as 32-bit floats in 0..1 (BITPIX -32, NAXIS3 3, 288 MB) and its
// luminance as 16-bit unsigned (BITPIX 16, BZERO 32768, 48 MB). Each read
// includes the normalisation and the error diffusion into freshly allocated
// 30-bit planes, the job the reference does into fresh doubles.
//
// Files go to PELLUCIDA_STATE_DIR when set, otherwise to the system's
// temporary folder, and are removed at the end unless PELLUCIDA_BENCH_KEEP is
// set: then they stay (and are reused) so that a comparison tool can read the
// very same files (bench/compare_anchors.sh).
#include "Bench_SkyPlanes.h"

#include "formats/Fits_Read.h"
#include "image/Image.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace {

std::string BenchFile(const char* name) {
    std::filesystem::path dir = std::filesystem::temp_directory_path();
    if (const char* state = std::getenv("PELLUCIDA_STATE_DIR"); state && *state) dir = state;
    return (dir / name).string();
}

void AppendCard(std::string& header, const char* text) {
    std::string card(text);
    card.resize(80, ' ');
    header += card;
}

// Writes a primary header and big-endian data, padded to whole 2880-byte blocks.
bool WriteFits(const std::string& path, const std::vector<const char*>& cards,
               const std::vector<uint8_t>& data) {
    std::string header;
    for (const char* c : cards) AppendCard(header, c);
    AppendCard(header, "END");
    header.resize((header.size() + 2879) / 2880 * 2880, ' ');
    std::vector<uint8_t> padding((2880 - data.size() % 2880) % 2880, 0);
    FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) return false;
    const bool ok = std::fwrite(header.data(), 1, header.size(), file) == header.size() &&
                    std::fwrite(data.data(), 1, data.size(), file) == data.size() &&
                    std::fwrite(padding.data(), 1, padding.size(), file) == padding.size();
    return std::fclose(file) == 0 && ok;
}

bool WriteRgbFloat(const std::string& path) {
    const ImageBuffer& sky = Bench_SkyImage();
    const size_t n = size_t(sky.width) * sky.height;
    std::vector<uint8_t> data(n * 3 * 4);
    uint8_t* out = data.data();
    for (const int64_t* plane : {sky.red, sky.green, sky.blue})
        for (size_t i = 0; i < n; ++i, out += 4) {
            const float v = static_cast<float>(static_cast<double>(plane[i]) / 1073741823.0);
            uint32_t u;
            std::memcpy(&u, &v, 4);
            out[0] = uint8_t(u >> 24), out[1] = uint8_t(u >> 16), out[2] = uint8_t(u >> 8),
            out[3] = uint8_t(u);
        }
    return WriteFits(path,
                     {"SIMPLE  =                    T", "BITPIX  =                  -32",
                      "NAXIS   =                    3", "NAXIS1  =                 6000",
                      "NAXIS2  =                 4000", "NAXIS3  =                    3"},
                     data);
}

bool WriteMonoU16(const std::string& path) {
    const ImageBuffer& sky = Bench_SkyImage();
    const size_t n = size_t(sky.width) * sky.height;
    std::vector<uint8_t> data(n * 2);
    for (size_t i = 0; i < n; ++i) {
        const int64_t lum = (sky.red[i] + sky.green[i] + sky.blue[i]) / 3;
        const int v = static_cast<int>(lum >> 14) - 32768;
        data[2 * i] = uint8_t((v >> 8) & 255);
        data[2 * i + 1] = uint8_t(v & 255);
    }
    return WriteFits(
        path,
        {"SIMPLE  =                    T", "BITPIX  =                   16", "NAXIS   =                    2",
         "NAXIS1  =                 6000", "NAXIS2  =                 4000", "BZERO   =                32768",
         "BSCALE  =                    1"},
        data);
}

bool KeepFiles() {
    const char* keep = std::getenv("PELLUCIDA_BENCH_KEEP");
    return keep && *keep;
}

void RemoveUnlessKept(const std::string& path) {
    if (!KeepFiles()) std::filesystem::remove(path);
}

bool Reusable(const std::string& path) {
    return KeepFiles() && std::filesystem::exists(path);
}

void ReadLoop(benchmark::State& state, const std::string& path, int64_t fileBytes) {
    for (auto _ : state) {
        ImagePtr image(Fits_Read(path.c_str()));
        if (!image) state.SkipWithError("read failed");
        benchmark::DoNotOptimize(image.get());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * fileBytes);
    state.SetLabel(Bench_SkySource());
}

void BM_FitsReadRgbFloat32(benchmark::State& state) {
    const std::string path = BenchFile("pellucida-bench-rgb-f32.fits");
    if (!Reusable(path) && !WriteRgbFloat(path)) state.SkipWithError("write failed");
    ReadLoop(state, path, int64_t(kBenchSkyWidth) * kBenchSkyHeight * 12);
    RemoveUnlessKept(path);
}

void BM_FitsReadMonoU16(benchmark::State& state) {
    const std::string path = BenchFile("pellucida-bench-mono-u16.fits");
    if (!Reusable(path) && !WriteMonoU16(path)) state.SkipWithError("write failed");
    ReadLoop(state, path, int64_t(kBenchSkyWidth) * kBenchSkyHeight * 2);
    RemoveUnlessKept(path);
}

}  // namespace

BENCHMARK(BM_FitsReadRgbFloat32)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_FitsReadMonoU16)->Unit(benchmark::kMillisecond)->UseRealTime();
