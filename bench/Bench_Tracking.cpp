// The tracking store against raw LZ4 block calls on the same planes: one slot
// of the 6000 x 4000 RGB sky written and read back, beside the bare
// LZ4_compress_default / LZ4_decompress_safe loops over the same 8 MiB blocks
// (one thread per block at a time, blocks handed out in order, as the
// comparison tool does). The argument is the number of threads: the store's
// workers (PELLUCIDA_WORKERS) or the raw loop's threads. "Time" is wall-clock time,
// "CPU" the whole process's CPU time (all threads), which a busy machine
// disturbs less.
//
// Slot files go to PELLUCIDA_STATE_DIR, or to a folder of this run under the
// system's temporary folder that is removed at the end.
#include "Bench_SkyPlanes.h"

#include "host/Host_Threads.h"
#include "image/Tracking.h"

#include <benchmark/benchmark.h>
#include <lz4.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int kBlock = 8388608;
constexpr int kBound = LZ4_COMPRESSBOUND(kBlock);
constexpr size_t kPlaneBytes = size_t{kBenchSkyWidth} * kBenchSkyHeight * 8;
constexpr size_t kBlocksPerPlane = (kPlaneBytes + kBlock - 1) / kBlock;

void SetEnv(const char* name, const std::string& value) {
#ifdef _WIN32
    _putenv_s(name, value.c_str());
#else
    setenv(name, value.c_str(), 1);
#endif
}

// A state folder for the run when none was given.
class StateDir {
public:
    StateDir() {
        if (const char* dir = std::getenv("PELLUCIDA_STATE_DIR"); dir && *dir) return;
        owned_ = std::filesystem::temp_directory_path() /
                 ("pellucida-bench-" + std::to_string(std::random_device{}()));
        std::filesystem::create_directories(owned_);
        SetEnv("PELLUCIDA_STATE_DIR", owned_.string());
    }
    ~StateDir() {
        std::error_code ec;
        if (!owned_.empty()) std::filesystem::remove_all(owned_, ec);
    }

private:
    std::filesystem::path owned_;
};

void EnsureStateDir() {
    static StateDir dir;
}

void UseWorkers(const benchmark::State& state) {
    SetEnv("PELLUCIDA_WORKERS", std::to_string(state.range(0)));
}

void ThreadArgs(benchmark::internal::Benchmark* bench) {
    bench->ArgName("threads")->Arg(1);
    const unsigned n = std::thread::hardware_concurrency();
    if (n > 1) bench->Arg(static_cast<int64_t>(n));
    bench->Unit(benchmark::kMillisecond)->UseRealTime()->MeasureProcessCPUTime();
}

void Report(benchmark::State& state, size_t storedBytes) {
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * 3 * kPlaneBytes));
    if (storedBytes)
        state.counters["ratio"] = static_cast<double>(3 * kPlaneBytes) / static_cast<double>(storedBytes);
    state.SetLabel(Bench_SkySource());
}

// --- The store -------------------------------------------------------------

ImageBuffer& ComposeCopy() {
    static ImagePtr copy(Image_Clone(&Bench_SkyImage()));
    return *copy;
}

void WriteSlot(benchmark::State& state, ImageBuffer& image, bool compose) {
    EnsureStateDir();
    UseWorkers(state);
    for (auto _ : state) {
        if (!Tracking_WriteSlot(0, 1, &image, compose)) {
            state.SkipWithError("slot write failed");
            break;
        }
    }
    Report(state, std::filesystem::file_size(Tracking_SlotPath(0, 1)));
}

void ReadSlot(benchmark::State& state, ImageBuffer& image, bool compose) {
    EnsureStateDir();
    UseWorkers(state);
    if (!Tracking_WriteSlot(0, 2, &image, compose)) {
        state.SkipWithError("slot write failed");
        return;
    }
    for (auto _ : state) {
        ImageBuffer* back = Tracking_ReadSlot(0, 2, compose);
        if (!back) {
            state.SkipWithError("slot read failed");
            break;
        }
        state.PauseTiming();
        Image_Free(back);
        state.ResumeTiming();
    }
    Report(state, std::filesystem::file_size(Tracking_SlotPath(0, 2)));
}

void BM_TrackingWriteSlot(benchmark::State& state) {
    WriteSlot(state, Bench_SkyImage(), false);
}
void BM_TrackingReadSlot(benchmark::State& state) {
    ReadSlot(state, Bench_SkyImage(), false);
}
void BM_TrackingWriteSlotCompose(benchmark::State& state) {
    WriteSlot(state, ComposeCopy(), true);
}
void BM_TrackingReadSlotCompose(benchmark::State& state) {
    ReadSlot(state, ComposeCopy(), true);
}

BENCHMARK(BM_TrackingWriteSlot)->Apply(ThreadArgs);
BENCHMARK(BM_TrackingReadSlot)->Apply(ThreadArgs);
BENCHMARK(BM_TrackingWriteSlotCompose)->Apply(ThreadArgs);
BENCHMARK(BM_TrackingReadSlotCompose)->Apply(ThreadArgs);

// --- Raw LZ4 on the same planes ---------------------------------------------

struct RawBlocks {
    std::vector<const char*> source;  // every block of the three planes, in file order
    std::vector<int> size;
    std::unique_ptr<char[]> compressed;  // kBound bytes a block
    std::vector<int> length;

    RawBlocks() {
        const ImageBuffer& image = Bench_SkyImage();
        const int64_t* planes[3] = {image.red, image.green, image.blue};
        for (const int64_t* plane : planes) {
            for (size_t b = 0; b < kBlocksPerPlane; ++b) {
                const size_t offset = b * kBlock;
                source.push_back(reinterpret_cast<const char*>(plane) + offset);
                size.push_back(static_cast<int>(std::min<size_t>(kBlock, kPlaneBytes - offset)));
            }
        }
        compressed.reset(new char[source.size() * kBound]);
        length.assign(source.size(), 0);
    }
    char* Compressed(size_t block) { return compressed.get() + block * kBound; }
    size_t Stored() const {
        size_t total = 0;
        for (int n : length) total += static_cast<size_t>(n);
        return total;
    }
};

RawBlocks& Raw() {
    static RawBlocks raw;
    return raw;
}

// Runs job(block) for every block over `threads` threads, each taking the next
// block as it gets free.
template <class Job>
void ForEachBlock(size_t blocks, int threads, Job job) {
    std::atomic<size_t> next{0};
    auto run = [&] {
        for (size_t b; (b = next.fetch_add(1)) < blocks;) job(b);
    };
    std::vector<std::thread> pool;
    for (int t = 1; t < threads; ++t) pool.emplace_back(run);
    run();
    for (std::thread& thread : pool) thread.join();
}

void CompressAll(RawBlocks& raw, int threads) {
    ForEachBlock(raw.source.size(), threads, [&](size_t b) {
        raw.length[b] = LZ4_compress_default(raw.source[b], raw.Compressed(b), raw.size[b], kBound);
    });
}

bool DecompressAll(RawBlocks& raw, int threads, char* const planes[3]) {
    std::atomic<bool> ok{true};
    ForEachBlock(raw.source.size(), threads, [&](size_t b) {
        char* target = planes[b / kBlocksPerPlane] + (b % kBlocksPerPlane) * size_t{kBlock};
        if (LZ4_decompress_safe(raw.Compressed(b), target, raw.length[b], raw.size[b]) != raw.size[b])
            ok = false;
    });
    return ok;
}

void BM_Lz4RawCompress(benchmark::State& state) {
    RawBlocks& raw = Raw();
    const int threads = static_cast<int>(state.range(0));
    for (auto _ : state) CompressAll(raw, threads);
    Report(state, raw.Stored());
}

// Into planes allocated once, as the comparison tool does.
void BM_Lz4RawDecompress(benchmark::State& state) {
    RawBlocks& raw = Raw();
    const int threads = static_cast<int>(state.range(0));
    CompressAll(raw, threads);
    ImagePtr back(Image_Create(kBenchSkyWidth, kBenchSkyHeight));
    char* const planes[3] = {reinterpret_cast<char*>(back->red), reinterpret_cast<char*>(back->green),
                             reinterpret_cast<char*>(back->blue)};
    for (auto _ : state) {
        if (!DecompressAll(raw, threads, planes)) state.SkipWithError("round trip failed");
    }
    Report(state, raw.Stored());
}

// Into planes allocated for each read, as a slot read must: the page faults
// of the new planes are part of the cost.
void BM_Lz4RawDecompressFresh(benchmark::State& state) {
    RawBlocks& raw = Raw();
    const int threads = static_cast<int>(state.range(0));
    CompressAll(raw, threads);
    for (auto _ : state) {
        ImagePtr back(Image_Create(kBenchSkyWidth, kBenchSkyHeight));
        char* const planes[3] = {reinterpret_cast<char*>(back->red), reinterpret_cast<char*>(back->green),
                                 reinterpret_cast<char*>(back->blue)};
        if (!DecompressAll(raw, threads, planes)) state.SkipWithError("round trip failed");
        state.PauseTiming();
        back.reset();
        state.ResumeTiming();
    }
    Report(state, raw.Stored());
}

// What the disk side of a slot write would cost done the plain way: the
// already compressed blocks written, each behind its length, to a new file
// that then replaces the previous one. The store overwrites its spare file
// instead (image/Tracking_Internal.h); this shows what that saves.
void BM_Lz4CompressedFileWrite(benchmark::State& state) {
    EnsureStateDir();
    RawBlocks& raw = Raw();
    CompressAll(raw, 1);
    const std::string path = Tracking_SlotPath(0, 3);
    const std::string pending = path + ".new";
    for (auto _ : state) {
        std::FILE* file = std::fopen(pending.c_str(), "wb");
        if (!file) {
            state.SkipWithError("cannot create the file");
            break;
        }
        std::setvbuf(file, nullptr, _IONBF, 0);
        const char header[16] = {};
        bool ok = std::fwrite(header, 1, sizeof header, file) == sizeof header;
        for (size_t b = 0; ok && b < raw.source.size(); ++b) {
            const uint32_t length = static_cast<uint32_t>(raw.length[b]);
            ok = std::fwrite(&length, 1, 4, file) == 4 &&
                 std::fwrite(raw.Compressed(b), 1, length, file) == length;
        }
        ok = std::fclose(file) == 0 && ok;
        std::error_code ec;
        std::filesystem::rename(pending, path, ec);
        if (!ok || ec) {
            state.SkipWithError("write failed");
            break;
        }
    }
    Report(state, raw.Stored());
}

BENCHMARK(BM_Lz4RawCompress)->Apply(ThreadArgs);
BENCHMARK(BM_Lz4CompressedFileWrite)->Unit(benchmark::kMillisecond)->UseRealTime()->MeasureProcessCPUTime();
BENCHMARK(BM_Lz4RawDecompress)->Apply(ThreadArgs);
BENCHMARK(BM_Lz4RawDecompressFresh)->Apply(ThreadArgs);

}  // namespace
