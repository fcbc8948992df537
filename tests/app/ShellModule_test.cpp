// The module framework in this process: a storm of setter changes during one
// computation ends with the newest values shown, and Cancel while a
// computation runs waits for it and leaves the working image as it was; Keep
// while one runs waits for the exact result and commits that. Crop, which
// computes nothing until Keep: its rectangle, status line, memory and marks.
#include "app/Shell_Module.h"
#include "host/Host_Threads.h"
#include "modules/Module_List.h"
#include "modules/crop/Crop_Params.h"
#include "support/Files.h"
#include "ui/ToolkitFixture.h"
#include "ui/widgets/Button.h"
#include "ui/widgets/Label.h"
#include "ui/widgets/LevelSetter.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstring>
#include <thread>

namespace {

// A shell with a toolkit over an 800 x 480 framebuffer and the built archive.
class ModuleFixture : public testing::Test {
protected:
    TempDir dir;
    EnvScope state{"PELLUCIDA_STATE_DIR", dir.Path().string()};
    std::vector<uint32_t> pixels = std::vector<uint32_t>(size_t(800) * 480);
    Shell shell;

    void SetUp() override {
        const std::string archive = ToolkitTest_ArchivePath();
        if (archive.empty()) GTEST_SKIP() << "no resources archive beside the tests";
        Shell_Install(&shell);
        shell.ui = Toolkit_CreateBare();
        int code = 0;
        shell.ui->archive = Resources_OpenPath(archive.c_str(), &code);
        Toolkit_SetScreen(shell.ui.get(), 800, 480, 800, pixels.data());
        Toolkit_SetMetricsFromScreen(shell.ui.get());
    }
    void TearDown() override {
        if (shell.module) Shell_LeaveModule(&shell, false);
        shell.ui.reset();
        Shell_Install(nullptr);
    }
    void Enter(const char* button) {
        Shell_EnterModule(&shell, *Module_FindByButton(Widget_PackId(button)));
        ASSERT_NE(shell.module, nullptr);
    }
    Widget* Find(const char* id) { return Widget_FindById(shell.module->form, Widget_PackId(id)); }
};

class ShellModuleTest : public ModuleFixture {
protected:
    void SetUp() override {
        ModuleFixture::SetUp();
        if (IsSkipped()) return;
        // Large enough that a computation takes a while, and is previewed binned first.
        ImagePtr image(Image_Create(1600, 1200));
        for (size_t i = 0; i < size_t(image->stride) * size_t(image->height); ++i)
            image->red[i] = image->green[i] = image->blue[i] = int64_t((i * 2654435761u) % 1000003u) << 10;
        shell.image = std::move(image);
        Enter("BtAD");
    }
    void Settle() {
        while (shell.module && shell.module->running) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            Shell_PollModule(&shell);
        }
    }
    void Move(uint32_t position) { LevelSetter_SetValue(shell.ui.get(), Find("LvS1"), position, true); }
};

TEST_F(ShellModuleTest, AStormOfChangesEndsWithTheNewestValuesShown) {
    for (uint32_t v = 1; v <= 40; ++v) Move(v);
    Settle();
    const ShellModule& m = *shell.module;
    ASSERT_NE(m.result, nullptr);
    EXPECT_EQ(std::memcmp(m.resultParams.bytes, m.params.bytes, sizeof m.params.bytes), 0);
    EXPECT_EQ(ModuleParams_Get(m.def->params[0], m.resultParams.bytes), 40);
    EXPECT_EQ(Widget_Record<ImageViewRecord>(m.view)->image, m.shown ? m.shown.get() : m.result.get());
}

TEST_F(ShellModuleTest, CancelWhileComputingWaitsAndLeavesTheImage) {
    Settle();
    const ImagePtr before(Image_Clone(shell.image.get()));
    Move(300);
    ASSERT_TRUE(shell.module->running);
    Shell_LeaveModule(&shell, false);
    EXPECT_EQ(shell.module, nullptr);
    EXPECT_EQ(Host_IsBackgroundRunning(), 0);
    const size_t n = size_t(before->stride) * size_t(before->height);
    for (int64_t* plane : {shell.image->red, shell.image->green, shell.image->blue})
        EXPECT_EQ(std::memcmp(plane, before->red, n * sizeof(int64_t)), 0);
    EXPECT_FALSE(shell.undo.available);
}

TEST_F(ShellModuleTest, KeepWhileComputingCommitsTheExactResultOnceItIsDone) {
    Settle();
    const ImagePtr before(Image_Clone(shell.image.get()));
    Move(200);
    Shell_KeepModule(&shell);
    ASSERT_NE(shell.module, nullptr);  // waiting, under its progress dialog
    EXPECT_NE(shell.module->keepProgress, nullptr);
    const ModuleDef& autodev = *shell.module->def;
    const ModuleParamsBuffer params = shell.module->params;
    Settle();
    ASSERT_EQ(shell.module, nullptr);
    ImageBuffer* expected = Image_Clone(before.get());
    ImageBuffer* noMask = nullptr;
    ASSERT_EQ(Module_Run(autodev, params.bytes, &expected, &noMask, nullptr), ModuleRunStatus::kDone);
    const ImagePtr owned(expected);
    const size_t n = size_t(expected->stride) * size_t(expected->height) * sizeof(int64_t);
    EXPECT_EQ(std::memcmp(shell.image->red, expected->red, n), 0);
    EXPECT_EQ(std::memcmp(shell.image->blue, expected->blue, n), 0);
    EXPECT_TRUE(shell.undo.available);
}

// Crop on a 200 x 150 gradient, small enough to be shown whole.
class CropScreenTest : public ModuleFixture {
protected:
    static constexpr int64_t kMax = 1073741823;
    void SetUp() override {
        ModuleFixture::SetUp();
        if (IsSkipped()) return;
        shell.image = Gradient(200, 150);
        shell.outcome = {false, false};
    }
    static ImagePtr Gradient(int32_t w, int32_t h) {
        ImagePtr image(Image_Create(w, h));
        image->bitDepth = 30;
        image->maxValue = kMax;
        for (int32_t y = 0; y < h; ++y)
            for (int32_t x = 0; x < w; ++x) {
                const size_t i = size_t(y) * size_t(image->stride) + size_t(x);
                image->red[i] = int64_t(x) << 20, image->green[i] = int64_t(y) << 20,
                image->blue[i] = 3 << 20;
            }
        return image;
    }
    std::array<int32_t, 4> Rect() {
        const auto& p = *reinterpret_cast<const CropParams*>(shell.module->params.bytes);
        return {p.x0, p.y0, p.x1, p.y1};
    }
    std::array<uint32_t, 4> Setters() {
        return {LevelSetter_Value(Find("LvS1")), LevelSetter_Value(Find("LvS2")),
                LevelSetter_Value(Find("LvS3")), LevelSetter_Value(Find("LvS4"))};
    }
    void Drag(int32_t x, int32_t y, int32_t w, int32_t h) {
        shell.module->def->screen->region(&shell.module->screen, {x, y, w, h});
    }
    void Press(const char* id) {
        auto* button = Widget_Record<ButtonRecord>(Find(id));
        ASSERT_FALSE(button->disabled) << id;
        button->onPress(shell.ui.get(), Find(id), button->user);
    }
    std::string Text(const char* id) {
        Widget* w = Find(id);
        if (w->type == kWidgetButton) return Widget_Record<ButtonRecord>(w)->text;
        return *Label_Text(w);
    }
    int64_t Shown(int c, int32_t x, int32_t y) {
        const ImageBuffer* shown = shell.module->shown.get();
        const int64_t* plane[3] = {shown->red, shown->green, shown->blue};
        return plane[c][size_t(y) * size_t(shown->stride) + size_t(x)];
    }
};

TEST_F(CropScreenTest, StatusLineAndViewToggleFollowTheData) {
    constexpr const char* kShort = "Click & drag to crop. New image is 200 x 150 pixels.";
    constexpr const char* kStretched =
        "Click & drag to crop. New image is 200 x 150 pixels. Please check color too (courtesy AutoDev "
        "applied).";
    const struct {
        bool linear, tracking;
        const char* status;
    } cases[] = {{true, true, kStretched}, {true, false, kShort}, {false, true, kShort}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.status);
        shell.outcome = {c.linear, c.tracking};
        Enter("BSCr");
        EXPECT_EQ(Text("LbSz"), c.status);
        EXPECT_EQ(Text("BtLU"), "Colour");
        const bool stretched = c.linear && c.tracking;
        EXPECT_EQ(Widget_Record<ButtonRecord>(Find("BtLU"))->disabled, !stretched);
        EXPECT_EQ(shell.module->display != nullptr, stretched);
        if (stretched) {
            // A luminance view first, grey; then the colour one.
            EXPECT_EQ(Shown(0, 150, 20), Shown(2, 150, 20));
            Press("BtLU");
            EXPECT_EQ(Text("BtLU"), "Luminance");
            EXPECT_NE(Shown(0, 150, 20), Shown(2, 150, 20));
            Press("BtLU");
            EXPECT_EQ(Text("BtLU"), "Colour");
        }
        Shell_LeaveModule(&shell, false);
    }
}

// A drag writes the corners and the marks follow: dimmed to a third outside,
// the edge at full scale; positions set from outside (changed with 0) are
// shown the same way.
TEST_F(CropScreenTest, DragAndOutsideChangesMoveTheRectangleAndItsMarks) {
    Enter("BSCr");
    Drag(20, 10, 50, 40);
    EXPECT_EQ(Rect(), (std::array{20, 10, 69, 49}));
    EXPECT_EQ(Setters(), (std::array{20u, 10u, 69u, 49u}));
    EXPECT_EQ(Text("LbSz"), "Click & drag to crop. New image is 50 x 40 pixels.");
    EXPECT_EQ(Shown(0, 150, 100), (int64_t(150) << 20) / 3);
    EXPECT_EQ(Shown(0, 40, 30), int64_t(40) << 20);
    EXPECT_EQ(Shown(1, 20, 30), kMax);

    auto& p = *reinterpret_cast<CropParams*>(shell.module->params.bytes);
    p = {100, 50, 149, 99};
    shell.module->def->screen->changed(&shell.module->screen, 0);
    EXPECT_EQ(Text("LbSz"), "Click & drag to crop. New image is 50 x 50 pixels.");
    EXPECT_EQ(Shown(0, 40, 30), (int64_t(40) << 20) / 3);
    EXPECT_EQ(Shown(0, 120, 70), int64_t(120) << 20);
}

// The aspect buttons through ApplyAspect, written to the setters; "Whole
// Image" resets. Grow near the bottom edge moves the rectangle up.
TEST_F(CropScreenTest, AspectButtonsAndWholeImageWriteTheSetters) {
    Enter("BSCr");
    const struct {
        std::array<int32_t, 4> drag;  // x, y, width, height
        const char* button;
        std::array<uint32_t, 4> setters;
    } cases[] = {
        {{0, 0, 200, 150}, "BtP0", {0, 8, 199, 141}},    // shrink to 3:2: the height gives
        {{0, 0, 200, 150}, "BtP3", {58, 0, 141, 149}},   // shrink to 9:16: the width gives
        {{0, 100, 200, 50}, "BtP4", {0, 18, 199, 149}},  // grow to 3:2 past the bottom: moved up
        {{150, 0, 50, 150}, "BtP6", {0, 0, 199, 149}},   // grow to 16:9 wider than the image
        {{30, 40, 50, 60}, "BtRs", {0, 0, 199, 149}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.button);
        Drag(c.drag[0], c.drag[1], c.drag[2], c.drag[3]);
        Press(c.button);
        EXPECT_EQ(Setters(), c.setters);
    }
}

// The rectangle comes back on the next entry only for an image of the same
// width and height; the first entry after a load that found a stacking
// border starts from the box inside it, once.
TEST_F(CropScreenTest, TheRectangleIsRememberedForTheSameSizeOnly) {
    shell.artefacts = true;
    shell.artefactBox = {5, 6, 190, 140};
    Enter("BSCr");
    EXPECT_EQ(Rect(), (std::array{5, 6, 189, 139}));
    Drag(20, 10, 50, 40);
    Shell_LeaveModule(&shell, false);
    EXPECT_FALSE(shell.artefacts);

    const struct {
        int32_t width, height;
        std::array<uint32_t, 4> setters;
    } cases[] = {{200, 150, {20, 10, 69, 49}}, {200, 151, {0, 0, 199, 150}}, {201, 150, {0, 0, 200, 149}}};
    for (const auto& c : cases) {
        shell.image = Gradient(c.width, c.height);
        Enter("BSCr");
        EXPECT_EQ(Setters(), c.setters) << c.width << " x " << c.height;
        Shell_LeaveModule(&shell, false);
    }
}

// Keep cuts the image and the mask as one undoable step; a rectangle of zero
// width or height crops nothing and simply closes.
TEST_F(CropScreenTest, KeepCutsImageAndMaskAndAZeroSideClosesOnly) {
    const struct {
        std::array<int32_t, 4> drag;
        int32_t width, height;  // after Keep
        int64_t corner;         // red at (0, 0) after Keep
    } cases[] = {{{20, 10, 50, 40}, 50, 40, int64_t(20) << 20},
                 {{30, 5, 1, 60}, 200, 150, 0},
                 {{30, 5, 60, 1}, 200, 150, 0}};
    for (const auto& c : cases) {
        shell.image = Gradient(200, 150);
        shell.mask = Gradient(200, 150);
        shell.undo = {};
        Enter("BSCr");
        Drag(c.drag[0], c.drag[1], c.drag[2], c.drag[3]);
        Press("BtKp");
        EXPECT_EQ(shell.module, nullptr);
        EXPECT_EQ(std::pair(shell.image->width, shell.image->height), std::pair(c.width, c.height));
        EXPECT_EQ(std::pair(shell.mask->width, shell.mask->height), std::pair(c.width, c.height));
        EXPECT_EQ(shell.mask->red[0], c.corner);
        EXPECT_EQ(shell.undo.available, c.width != 200);
    }
}

}  // namespace
