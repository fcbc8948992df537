// The module framework's threads, in this process: a storm of setter changes
// during one computation ends with the newest values shown, and Cancel while
// a computation runs cancels it, waits for it and leaves the working image as
// it was; Keep while one runs waits for the exact result and commits that.
// Keep is greyed out until there is a result, and positions that give none
// (Bin at scale 0) leave the shown one. Rotate's grid is drawn on the view's
// copy only, and drawn again for a new zoom.
#include "app/Shell_Module.h"
#include "host/Host_Threads.h"
#include "modules/Module_List.h"
#include "support/Files.h"
#include "ui/ToolkitFixture.h"
#include "ui/widgets/ImageView.h"
#include "ui/widgets/Label.h"
#include "ui/widgets/LevelSetter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <thread>
#include <tuple>

namespace {

class ShellModuleTest : public testing::Test {
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
        // Large enough that a computation takes a while, and is previewed binned first.
        ImagePtr image(Image_Create(1600, 1200));
        for (size_t i = 0; i < size_t(image->stride) * size_t(image->height); ++i)
            image->red[i] = image->green[i] = image->blue[i] = int64_t((i * 2654435761u) % 1000003u) << 10;
        shell.image = std::move(image);
    }
    void TearDown() override {
        if (shell.module) Shell_LeaveModule(&shell, false);
        shell.ui.reset();
        Shell_Install(nullptr);
    }
    void Settle() {
        while (shell.module && shell.module->running) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            Shell_PollModule(&shell);
        }
    }
    void Enter(const char* button) {
        Shell_EnterModule(&shell, *Module_FindByButton(Widget_PackId(button)));
        ASSERT_NE(shell.module, nullptr);
    }
    Widget* Find(const char* id) { return Widget_FindById(shell.module->form, Widget_PackId(id)); }
    // Presses a button as the pointer would: false when it is greyed out.
    bool Press(const char* id) {
        Widget* button = Find(id);
        auto* record = Widget_Record<ButtonRecord>(button);
        if (record->disabled) return false;
        record->onPress(shell.ui.get(), button, record->user);
        return true;
    }
    std::string Text(const char* id) { return *Label_Text(Find(id)); }
    const ImageBuffer* Shown() { return Widget_Record<ImageViewRecord>(shell.module->view)->image; }
    void Move(uint32_t position) {
        LevelSetter_SetValue(shell.ui.get(), Widget_FindById(shell.module->form, Widget_PackId("LvS1")),
                             position, true);
    }
};

TEST_F(ShellModuleTest, AStormOfChangesEndsWithTheNewestValuesShown) {
    Enter("BtAD");
    for (uint32_t v = 1; v <= 40; ++v) Move(v);
    Settle();
    const ShellModule& m = *shell.module;
    ASSERT_NE(m.result, nullptr);
    EXPECT_EQ(std::memcmp(m.resultParams.bytes, m.params.bytes, sizeof m.params.bytes), 0);
    EXPECT_EQ(ModuleParams_Get(m.def->params[0], m.resultParams.bytes), 40);
    EXPECT_EQ(Widget_Record<ImageViewRecord>(m.view)->image, m.shown ? m.shown.get() : m.result.get());
}

TEST_F(ShellModuleTest, CancelWhileComputingCancelsWaitsAndLeavesTheImage) {
    Enter("BtAD");
    Settle();
    const ImagePtr before(Image_Clone(shell.image.get()));
    Move(300);
    ASSERT_TRUE(shell.module->running);
    const std::shared_ptr<ShellModule> left = shell.module;
    Shell_LeaveModule(&shell, false);
    EXPECT_EQ(shell.module, nullptr);
    EXPECT_EQ(left->runStatus, ModuleRunStatus::kCancelled);
    EXPECT_FALSE(left->running);
    EXPECT_EQ(Host_IsBackgroundRunning(), 0);
    const size_t n = size_t(before->stride) * size_t(before->height);
    for (int64_t* plane : {shell.image->red, shell.image->green, shell.image->blue})
        EXPECT_EQ(std::memcmp(plane, before->red, n * sizeof(int64_t)), 0);
    EXPECT_FALSE(shell.undo.available);
}

TEST_F(ShellModuleTest, KeepWhileComputingCommitsTheExactResultOnceItIsDone) {
    Enter("BtAD");
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

TEST_F(ShellModuleTest, BinKeepWaitsForAResultAndScaleZeroLeavesTheShownOne) {
    Enter("BSBi");
    EXPECT_FALSE(Press("BtKp"));
    EXPECT_EQ(Text("LbSz"), "Image Size 800 x 600 pixels");
    Settle();
    ASSERT_TRUE(Press("Bt35"));  // 3538: 1600 x 0.3538 = 566.08, 1200 x 0.3538 = 424.56
    EXPECT_EQ(Text("LbSz"), "Image Size 566 x 424 pixels");
    Settle();
    const ImageBuffer* shown = Shown();
    ASSERT_EQ(std::tuple(shown->width, shown->height), std::tuple(566, 424));
    Move(0);
    Settle();
    EXPECT_EQ(Shown(), shown);
    EXPECT_TRUE(Press("BtKp"));  // nothing to commit for a scale of 0
    EXPECT_FALSE(shell.undo.available);
}

TEST_F(ShellModuleTest, RotateGridMarksTheViewsCopyAgainForANewZoom) {
    Enter("BtRt");
    Settle();
    const auto gridPixels = [&] {
        const ShellModule& m = *shell.module;
        EXPECT_EQ(Shown(), m.shown.get());
        size_t n = 0;
        for (size_t i = 0; i < size_t(m.result->stride) * size_t(m.result->height); ++i)
            n += m.shown->red[i] != m.result->red[i];
        return n;
    };
    const size_t fitted = gridPixels();
    EXPECT_GT(fitted, 0u);
    ASSERT_TRUE(Press("BtZ+"));
    const size_t zoomed = gridPixels();
    EXPECT_GT(zoomed, 0u);
    EXPECT_NE(zoomed, fitted);
}

}  // namespace
