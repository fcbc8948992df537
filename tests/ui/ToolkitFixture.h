// A toolkit over an in-memory framebuffer with the archive the build made
// and the test form loaded: the widget tests drive it through the real event
// ring by identifier, as a user would.
#pragma once

#include "host/Host.h"
#include "host/Host_Os.h"
#include "host/headless/Headless.h"
#include "ui/Entities.h"
#include "ui/Layout.h"
#include "ui/TestForm.h"
#include "ui/Toolkit.h"
#include "ui/Toolkit_Create.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/Toolkit_Events.h"
#include "ui/WidgetKinds.h"
#include "ui/archive/Resources_Open.h"
#include "ui/markup/Markup_Form.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

// Ends a toolkit that runs in the host's loop (headless or in a real window):
// the loop and the window go, ticks come on their own again and the session's
// toolkit is freed. Nothing happens when no session runs.
template <class Session>
void ToolkitTest_EndHosted(Session*& running) {
    if (!running) return;
    Host_Shutdown();
    Host_DestroyMainWindow();
    Headless_SetAutoTicks(true);
    running->toolkit.reset();
    running = nullptr;
}

// The archive beside the executables: the build folder, one up from the tests.
inline std::string ToolkitTest_ArchivePath() {
    namespace fs = std::filesystem;
    if (const char* env = std::getenv("PELLUCIDA_RESOURCES"); env && *env) return env;
    for (const fs::path& candidate :
         {fs::path(Host_GetProgramDir()) / "resources", fs::path(Host_GetProgramDir()) / ".." / "resources"})
        if (fs::is_regular_file(candidate)) return candidate.string();
    return {};
}

// A context without archive or framebuffer, measured for a screen of w x h.
inline std::unique_ptr<Toolkit> ToolkitTest_Screen(uint32_t w = 800, uint32_t h = 480) {
    auto tk = Toolkit_CreateBare();
    Toolkit_SetScreen(tk.get(), w, h, w, nullptr);
    Toolkit_SetMetricsFromScreen(tk.get());
    return tk;
}

// A context with the archive the build made, its screen w x h drawn into
// `pixels` (null: measured only); null when no archive lies beside the tests.
inline std::unique_ptr<Toolkit> ToolkitTest_Archived(uint32_t w, uint32_t h, uint32_t* pixels) {
    const std::string archive = ToolkitTest_ArchivePath();
    if (archive.empty()) return nullptr;
    auto tk = Toolkit_CreateBare();
    int code = -1;
    tk->archive = Resources_OpenPath(archive.c_str(), &code);
    EXPECT_EQ(code, kResourceOk) << archive;
    Toolkit_SetScreen(tk.get(), w, h, w, pixels);
    Toolkit_SetMetricsFromScreen(tk.get());
    return tk;
}

// Builds markup text under `parent` (the root when null).
inline Widget* ToolkitTest_Load(Toolkit* tk, const std::string& markup, Widget* parent = nullptr,
                                const char* name = "test.xml") {
    return Form_LoadText(tk, name, reinterpret_cast<const uint8_t*>(markup.data()), markup.size(), parent);
}

class ToolkitTest : public testing::Test {
protected:
    int32_t width = 800, height = 480;
    std::vector<uint32_t> framebuffer;
    std::unique_ptr<Toolkit> tk;
    TestFormContent content;
    Widget* form = nullptr;

    void SetUp() override {
        framebuffer.assign(size_t(width) * height, 0);
        tk = ToolkitTest_Archived(uint32_t(width), uint32_t(height), framebuffer.data());
        if (!tk) GTEST_SKIP() << "no resources archive beside the test program (build pellucida_resources)";
        ASSERT_NE(tk->archive, nullptr);
        ASSERT_TRUE(Toolkit_LoadFont(tk.get()));
        form = TestForm_Load(tk.get(), &content);
        ASSERT_NE(form, nullptr);
        Toolkit_Dispatch(tk.get());
        Toolkit_DrawAll(tk.get());
        Toolkit_Present(tk.get());
    }

    Widget* W(const char* id) {
        Widget* w = Widget_FindById(tk->root.get(), Widget_PackId(id));
        EXPECT_NE(w, nullptr) << id;
        return w;
    }
    PixelRect R(Widget* w) { return Widget_PixelRect(tk.get(), w); }

    // Pointer and keys as the shell posts them: to the root, then dispatched.
    void Press(int32_t x, int32_t y) { Post(kEventPress, x, y, 1); }
    void Drag(int32_t x, int32_t y) { Post(kEventDrag, x, y, 1); }
    void Release(int32_t x, int32_t y) { Post(kEventRelease, x, y, 0); }
    void Tap(int32_t x, int32_t y) {
        Press(x, y);
        Release(x, y);
    }
    void Click(Widget* w) {
        const PixelRect r = R(w);
        Tap(r.x + r.width / 2, r.y + r.height / 2);
    }
    void Key(uint32_t code) { Post(kEventCharacter, int32_t(code), 0, 0); }
    void Type(const std::string& text) {
        for (unsigned char c : text) Key(c);
    }
    void Post(uint32_t code, int32_t a, int32_t b, int32_t c) {
        Toolkit_PostEvent(tk.get(), tk->root.get(), code, uint32_t(a), uint32_t(b), uint32_t(c));
        Toolkit_Dispatch(tk.get());
    }
    uint32_t Pixel(int32_t x, int32_t y) const { return framebuffer[size_t(y) * width + x]; }
};
