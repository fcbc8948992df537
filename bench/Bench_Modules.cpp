// Processing kernels on the generated 6000 x 4000 RGB linear sky at 30 bits:
// AutoDev at its defaults (with its peak resident memory), Bin at 5000 and
// 7071, Rotate at 100 (10 degrees) and 900, GaussianBlur at r = 2 on the
// three planes, and Stereo's depth map and side-by-side preview. Every kernel
// makes its result in a new image, as the module forms do; AutoDev is also
// timed in place, as the batch pipeline runs it. Bin, Rotate and the blur first run once untimed, as the
// anchors they are compared with do, so that a first run's fresh pages are not counted for one side only (a
// module form's later runs reuse those pages too).
#include "Bench_SkyPlanes.h"

#include "image/Image.h"
#include "modules/autodev/AutoDev_Params.h"
#include "modules/bin/Bin_Kernel.h"
#include "modules/bin/Bin_Params.h"
#include "modules/common/GaussianBlur.h"
#include "modules/rotate/Rotate_Kernel.h"
#include "modules/rotate/Rotate_Params.h"
#include "modules/stereo/Stereo_Kernel.h"

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <cstdio>
#include <vector>

namespace {

constexpr double kMiB = 1024.0 * 1024.0;

double PeakResidentMiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) * 1024.0 / kMiB;  // ru_maxrss is in KiB
}

double CurrentResidentMiB() {
    long pages = 0, resident = 0;
    if (FILE* f = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2) resident = 0;
        std::fclose(f);
    }
    return double(resident) * 4096.0 / kMiB;
}

// CPU seconds of the whole process (every worker thread), user plus system:
// on a shared machine the wall time moves with the neighbours, this does not.
double ProcessCpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           1e-6 * double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

// Reports the process CPU time per iteration since `start`.
void ReportCpu(benchmark::State& state, double start) {
    state.counters["cpu_s"] = (ProcessCpuSeconds() - start) / double(state.iterations());
}

double ImageMiB(const ImageBuffer& image) {
    return 3.0 * image.width * image.height * 8.0 / kMiB;
}

// AutoDev runs first in the program (the benchmarks are registered in this
// order), so the process peak before it is the input image and little else.
void BM_AutoDev_Defaults(benchmark::State& state) {
    const ImageBuffer& sky = Bench_SkyImage();
    const bool mono = AutoDev_IsMonochrome(&sky);
    const double residentBefore = CurrentResidentMiB();
    const double cpuStart = ProcessCpuSeconds();
    for (auto _ : state) {
        ImagePtr out(
            AutoDev_Run(&sky, AutoDev_Settings(AutoDevParams{}, sky.width, sky.height, mono), nullptr));
        benchmark::DoNotOptimize(out.get());
    }
    ReportCpu(state, cpuStart);
    state.counters["input_MiB"] = ImageMiB(sky);
    state.counters["resident_before_MiB"] = residentBefore;
    state.counters["peak_MiB"] = PeakResidentMiB();
    state.counters["peak_over_input_x"] = (PeakResidentMiB() - residentBefore) / ImageMiB(sky);
}
BENCHMARK(BM_AutoDev_Defaults)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

void BM_AutoDev_InPlace(benchmark::State& state) {
    const ImageBuffer& sky = Bench_SkyImage();
    ImagePtr work(Image_Clone(&sky));
    const double cpuStart = ProcessCpuSeconds();
    for (auto _ : state) {
        state.PauseTiming();
        for (int64_t* p : {work->red, work->green, work->blue}) {
            const int64_t* from = p == work->red ? sky.red : p == work->green ? sky.green : sky.blue;
            std::copy(from, from + int64_t{sky.width} * sky.height, p);
        }
        state.ResumeTiming();
        benchmark::DoNotOptimize(
            AutoDev_RunInto(work.get(), work.get(),
                            AutoDev_Settings(AutoDevParams{}, work->width, work->height, false), nullptr));
    }
    ReportCpu(state, cpuStart);
}
BENCHMARK(BM_AutoDev_InPlace)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

void BM_Bin(benchmark::State& state) {
    const ImageBuffer& sky = Bench_SkyImage();
    const double s = Bin_Settings(BinParams{static_cast<int32_t>(state.range(0))}).scale;
    ImagePtr(BinImage(&sky, s, nullptr)).reset();
    const double cpuStart = ProcessCpuSeconds();
    for (auto _ : state) {
        ImagePtr out(BinImage(&sky, s, nullptr));
        benchmark::DoNotOptimize(out.get());
    }
    ReportCpu(state, cpuStart);
}
BENCHMARK(BM_Bin)->Arg(5000)->Arg(7071)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

void BM_Rotate(benchmark::State& state) {
    const ImageBuffer& sky = Bench_SkyImage();
    const double degrees = Rotate_Settings(RotateParams{static_cast<int32_t>(state.range(0))}).degrees;
    ImagePtr(RotateImage(&sky, degrees, nullptr)).reset();
    const double cpuStart = ProcessCpuSeconds();
    for (auto _ : state) {
        ImagePtr out(RotateImage(&sky, degrees, nullptr));
        benchmark::DoNotOptimize(out.get());
    }
    ReportCpu(state, cpuStart);
}
BENCHMARK(BM_Rotate)->Arg(100)->Arg(900)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

// The three planes into an existing image, as Bin's prefilter does.
void BM_GaussianBlur_R2(benchmark::State& state) {
    const ImageBuffer& sky = Bench_SkyImage();
    ImagePtr out(Image_Clone(&sky));
    GaussianBlur(sky.red, out->red, sky.width, sky.height, sky.stride, 2.0, nullptr);
    const double cpuStart = ProcessCpuSeconds();
    for (auto _ : state) {
        GaussianBlur(sky.red, out->red, sky.width, sky.height, sky.stride, 2.0, nullptr);
        GaussianBlur(sky.green, out->green, sky.width, sky.height, sky.stride, 2.0, nullptr);
        GaussianBlur(sky.blue, out->blue, sky.width, sky.height, sky.stride, 2.0, nullptr);
    }
    ReportCpu(state, cpuStart);
}
BENCHMARK(BM_GaussianBlur_R2)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

// Stereo: the depth map alone (what every export computes) and the side-by-side
// preview (depth map, both views and the layout), at the module's defaults.
void BM_Stereo(benchmark::State& state) {
    const ImageBuffer& sky = Bench_SkyImage();
    StereoSettings settings;
    settings.preview = state.range(0) ? StereoPreview::kPair : StereoPreview::kDepth;
    const auto run = [&] {
        return state.range(0) ? Stereo_Preview(&sky, settings, nullptr)
                              : Stereo_DepthMap(&sky, settings, nullptr);
    };
    ImagePtr(run()).reset();
    const double cpuStart = ProcessCpuSeconds();
    for (auto _ : state) {
        ImagePtr out(run());
        benchmark::DoNotOptimize(out.get());
    }
    ReportCpu(state, cpuStart);
}
BENCHMARK(BM_Stereo)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

}  // namespace
