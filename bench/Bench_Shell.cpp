// The desktop program's own costs: from the start to the main form on screen
// (the whole program on the headless backend, the splash's period left out
// since its time is virtual there), and a full redraw of the main form at
// 1920 x 1080 with the 24-megapixel sky in its view, shown through the screen
// stretch as a linear stack is: as drawn before (a box closing over it) and
// converted afresh (a new image or stretch).
#include "Bench_SkyPlanes.h"

#include "app/Shell.h"
#include "app/Shell_Module.h"
#include "host/Host_Os.h"
#include "host/Host_Run.h"
#include "host/headless/Headless.h"
#include "modules/Module_List.h"
#include "ui/Entities.h"
#include "ui/Toolkit_Create.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/archive/Resources_Open.h"
#include "ui/markup/Markup_Form.h"
#include "ui/widgets/ImageView.h"
#include "ui/widgets/LevelSetter.h"

#include <benchmark/benchmark.h>

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <utility>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

std::string ArchivePath() {
    for (const fs::path& p :
         {fs::path(Host_GetProgramDir()) / "resources", fs::path(Host_GetProgramDir()) / ".." / "resources"})
        if (fs::is_regular_file(p)) return p.string();
    return {};
}

// Standard output sent to /dev/null for the scope, then given back.
struct QuietStdout {
    int saved = -1;
    QuietStdout() {
        std::fflush(stdout);
        saved = dup(1);
        const int null = open("/dev/null", O_WRONLY);
        if (null >= 0) dup2(null, 1), close(null);
    }
    ~QuietStdout() {
        std::fflush(stdout);
        if (saved >= 0) dup2(saved, 1), close(saved);
    }
};

// Passes the events on and notes when the main form first came up.
Clock::time_point g_mainFormShown;
int TimingHandler(AppEvent* event) {
    Shell* shell = Shell_Get();
    const bool before = shell->mainFormUp;
    const int quit = Shell_OnAppEvent(event);
    if (!before && shell->mainFormUp) g_mainFormShown = Clock::now();
    return quit;
}

// The splash's period passes in virtual time, so the figure is the program's
// own work: host and toolkit start-up, the splash drawn, every form loaded,
// the tracking slots prepared and the main form drawn.
void BM_Shell_StartToMainForm(benchmark::State& state) {
    if (ArchivePath().empty()) return state.SkipWithError("no resources archive beside the benchmark");
    const fs::path folder = fs::temp_directory_path() / "pellucida-bench-start";
    fs::create_directories(folder);
    setenv("PELLUCIDA_STATE_DIR", folder.c_str(), 1);
    const fs::path script = folder / "script.txt";
    std::ofstream(script) << "wait 20\nclose\nanswer Close\n";
    HostOptions options;
    options.host = "headless";
    options.script = script.string();
    QuietStdout quiet;  // the banner, once per start
    for (auto _ : state) {
        Headless_Reset();
        Headless_SetInitialSize(1920, 1080);
        Headless_SetAppCommandHandler(Shell_ScriptCommand);
        Headless_SetAppBusyCheck(Shell_Busy);
        Shell shell;
        Shell_Install(&shell);
        g_mainFormShown = {};
        const Clock::time_point start = Clock::now();
        Host_Run("pellucida", options, TimingHandler);
        Shell_Install(nullptr);
        if (g_mainFormShown == Clock::time_point{}) return state.SkipWithError("the main form never came up");
        state.SetIterationTime(std::chrono::duration<double>(g_mainFormShown - start).count());
    }
    unsetenv("PELLUCIDA_STATE_DIR");
    fs::remove_all(folder);
}
BENCHMARK(BM_Shell_StartToMainForm)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_Shell_MainFormRedraw1080p(benchmark::State& state) {
    const std::string archive = ArchivePath();
    if (archive.empty()) return state.SkipWithError("no resources archive beside the benchmark");
    std::vector<uint32_t> pixels(size_t(1920) * 1080);
    std::unique_ptr<Toolkit> toolkit = Toolkit_CreateBare();
    Toolkit* tk = toolkit.get();
    int code = 0;
    tk->archive = Resources_OpenPath(archive.c_str(), &code);
    Toolkit_SetScreen(tk, 1920, 1080, 1920, pixels.data());
    Toolkit_SetMetricsFromScreen(tk);
    Toolkit_LoadFont(tk);
    const std::vector<uint8_t> markup = Resources_LoadWhole(tk, kMainFormEntry);
    Form_LoadText(tk, kMainFormEntry, markup.data(), markup.size(), tk->root.get());
    Widget* view = Widget_FindById(tk->root.get(), Widget_PackId("View"));
    if (!view) return state.SkipWithError("the main form has no view");
    const ImageBuffer& sky = Bench_SkyImage();
    std::vector<uint8_t> luts;
    Shell_ComputeScreenStretch(&sky, &luts);
    ImageView_SetImage(tk, view, &sky, nullptr);
    ImageView_SetTables(tk, view, luts.data(), true);
    Toolkit_Dispatch(tk);
    // Argument 1: the tables are set anew before each redraw, so the image is
    // converted again (what a new image or a new stretch costs).
    const bool convert = state.range(0) == 1;
    for (auto _ : state) {
        if (convert) ImageView_SetTables(tk, view, luts.data(), true);
        Toolkit_DrawAll(tk);
        benchmark::DoNotOptimize(pixels.data());
    }
    state.counters["zoom_percent"] = ImageView_Zoom(tk, view);
}
BENCHMARK(BM_Shell_MainFormRedraw1080p)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// A level-setter change in a module's form on the 24-megapixel sky at 1920 x
// 1080, until the preview is drawn: `first_ms` to the first picture (the quick
// one of the binned copy), `exact_ms` to the exact result. The module's first
// fixed-range setter is moved between its default and `target` (half way up
// its range when negative); the shell is polled as its ticks would poll it.
void BM_ModulePreview(benchmark::State& state, const ModuleDef* module, int32_t target) {
    const std::string archive = ArchivePath();
    if (archive.empty()) return state.SkipWithError("no resources archive beside the benchmark");
    const ModuleParam* row = nullptr;
    for (const ModuleParam& r : module->params)
        if (r.extent == ParamExtent::Fixed && !row) row = &r;
    if (!row) return state.SkipWithError("the module has no setter to move");
    std::vector<uint32_t> pixels(size_t(1920) * 1080);
    Shell shell;
    Shell_Install(&shell);
    shell.ui = Toolkit_CreateBare();
    Toolkit* tk = shell.ui.get();
    int code = 0;
    tk->archive = Resources_OpenPath(archive.c_str(), &code);
    Toolkit_SetScreen(tk, 1920, 1080, 1920, pixels.data());
    Toolkit_SetMetricsFromScreen(tk);
    Toolkit_LoadFont(tk);
    shell.image.reset(Image_Clone(&Bench_SkyImage()));
    shell.outcome.linear = true;
    Shell_EnterModule(&shell, *module);
    if (!shell.module) return state.SkipWithError("the module's form is not in the archive");
    ShellModule& m = *shell.module;
    const auto settle = [&] {
        while (m.running) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            Shell_PollModule(&shell);
        }
    };
    settle();
    Widget* setter = Widget_FindById(m.form, row->setterId);
    const uint32_t a = uint32_t(ModuleParams_Get(*row, m.params.bytes)),
                   b = target >= 0 ? uint32_t(target) : a + (uint32_t(row->maximum) - a) / 2 + 1;
    double firstTotal = 0, exactTotal = 0;
    int64_t n = 0;
    for (auto _ : state) {
        const uint32_t to = n % 2 == 0 ? b : a;
        const Clock::time_point start = Clock::now();
        LevelSetter_SetValue(tk, setter, to, true);
        double first = -1;
        while (true) {
            std::this_thread::sleep_for(std::chrono::microseconds(200));
            Shell_PollModule(&shell);
            const bool exact =
                m.result && std::memcmp(m.resultParams.bytes, m.params.bytes, sizeof m.params.bytes) == 0;
            const bool quick =
                m.smallResult && std::memcmp(m.smallParams.bytes, m.params.bytes, sizeof m.params.bytes) == 0;
            if ((quick || exact) && first < 0) {
                Toolkit_DrawAll(tk);
                first = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
            }
            if (exact && !m.running) {
                Toolkit_DrawAll(tk);
                break;
            }
        }
        firstTotal += first;
        exactTotal += std::chrono::duration<double, std::milli>(Clock::now() - start).count();
        ++n;
    }
    state.counters["first_ms"] = firstTotal / double(n);
    state.counters["exact_ms"] = exactTotal / double(n);
    Shell_LeaveModule(&shell, false);
    shell.ui.reset();
    Shell_Install(nullptr);
}

// One case per module that has a screen, and the positions users pick most:
// Bin's 71 % (the resampling path) and Rotate's 10 degrees (a general angle).
const int kModulePreviewCases = [] {
    const auto add = [](const ModuleDef* module, int32_t target) {
        std::string name = std::string("BM_ModulePreview/") + module->option;
        if (target >= 0) name += "/" + std::to_string(target);
        benchmark::RegisterBenchmark(name.c_str(), BM_ModulePreview, module, target)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime()
            ->Iterations(6);
    };
    for (const ModuleDef* module : Module_List())
        if (module->form && module->screen && !module->appliesOnKeep) add(module, -1);
    for (const auto& [option, target] : {std::pair("bin", 7071), std::pair("rotate", 100)})
        for (const ModuleDef* module : Module_List())
            if (std::string(module->option) == option) add(module, target);
    return 0;
}();

}  // namespace
