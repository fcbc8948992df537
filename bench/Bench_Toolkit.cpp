// The toolkit's redraw costs on one core: the whole test form at 1920 x 1080
// (what a resize or a closing message box costs), and one step of a
// level-setter drag, which redraws only the setter and its value label.
#include "host/Host_Os.h"
#include "ui/Entities.h"
#include "ui/TestForm.h"
#include "ui/Toolkit.h"
#include "ui/Toolkit_Create.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/Toolkit_Events.h"
#include "ui/archive/Resources_Open.h"
#include "ui/widgets/LevelSetter.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <vector>

namespace {

struct Screen {
    std::vector<uint32_t> pixels;
    std::unique_ptr<Toolkit> toolkit;
    TestFormContent content;
};

// The archive the build made, beside the benchmark's folder; null when there is none.
std::unique_ptr<Screen> MakeScreen(uint32_t width, uint32_t height) {
    namespace fs = std::filesystem;
    std::string archive;
    for (const fs::path& p :
         {fs::path(Host_GetProgramDir()) / "resources", fs::path(Host_GetProgramDir()) / ".." / "resources"})
        if (fs::is_regular_file(p)) archive = p.string();
    if (archive.empty()) return nullptr;
    auto screen = std::make_unique<Screen>();
    screen->pixels.assign(size_t(width) * height, 0);
    screen->toolkit = Toolkit_CreateBare();
    Toolkit* tk = screen->toolkit.get();
    int code = 0;
    tk->archive = Resources_OpenPath(archive.c_str(), &code);
    Toolkit_SetScreen(tk, width, height, width, screen->pixels.data());
    Toolkit_SetMetricsFromScreen(tk);
    Toolkit_LoadFont(tk);
    TestForm_Load(tk, &screen->content);
    Toolkit_Dispatch(tk);
    Toolkit_DrawAll(tk);
    return screen;
}

void BM_ToolkitFullRedraw1080p(benchmark::State& state) {
    auto screen = MakeScreen(1920, 1080);
    if (!screen) {
        state.SkipWithError("no resources archive beside the benchmark");
        return;
    }
    for (auto _ : state) {
        Toolkit_DrawAll(screen->toolkit.get());
        benchmark::DoNotOptimize(screen->pixels.data());
    }
}
BENCHMARK(BM_ToolkitFullRedraw1080p)->Unit(benchmark::kMillisecond);

// One drag event through the ring: the setter moves a step, its value label is
// formatted, and only the setter is drawn again.
void BM_ToolkitLevelSetterDrag1080p(benchmark::State& state) {
    auto screen = MakeScreen(1920, 1080);
    if (!screen) {
        state.SkipWithError("no resources archive beside the benchmark");
        return;
    }
    Toolkit* tk = screen->toolkit.get();
    Widget* setter = Widget_FindById(tk->root.get(), Widget_PackId("LvS0"));
    const LevelSetterTrack t = LevelSetter_Track(tk, setter);
    Toolkit_PostEvent(tk, tk->root.get(), kEventPress, uint32_t(t.left), uint32_t(t.centreY), 1);
    Toolkit_Dispatch(tk);
    int32_t x = t.left;
    for (auto _ : state) {
        x = x >= t.right ? t.left : x + 1;
        Toolkit_PostEvent(tk, tk->root.get(), kEventDrag, uint32_t(x), uint32_t(t.centreY), 1);
        Toolkit_Dispatch(tk);
    }
    state.counters["value"] = LevelSetter_Value(setter);
}
BENCHMARK(BM_ToolkitLevelSetterDrag1080p)->Unit(benchmark::kMicrosecond);

}  // namespace
