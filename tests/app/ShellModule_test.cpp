// The module framework's threads, in this process: a storm of setter changes
// during one computation ends with the newest values shown, and Cancel while
// a computation runs waits for it and leaves the working image as it was; Keep
// while one runs waits for the exact result and commits that; the quick
// preview of a colour image is in colour.
#include "app/Shell_Module.h"
#include "host/Host_Threads.h"
#include "modules/Module_List.h"
#include "support/Files.h"
#include "ui/ToolkitFixture.h"
#include "ui/widgets/LevelSetter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <thread>

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
        Shell_EnterModule(&shell, *Module_FindByButton(Widget_PackId("BtAD")));
        ASSERT_NE(shell.module, nullptr);
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
    void Move(uint32_t position) {
        LevelSetter_SetValue(shell.ui.get(), Widget_FindById(shell.module->form, Widget_PackId("LvS1")),
                             position, true);
    }
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

// Colour in one pixel of every 4 x 4 block, one step of the monochrome test
// above grey: the binned copy averages it below the step. Whether the image
// is monochrome is the entered image's, not the quick copy's.
TEST_F(ShellModuleTest, TheQuickPreviewKeepsColourThatBinningAveragesAway) {
    Shell_LeaveModule(&shell, false);
    ImagePtr image(Image_Create(1600, 1200));
    const int64_t step = int64_t{1} << (image->bitDepth - 8);
    for (int32_t y = 0; y < image->height; ++y)
        for (int32_t x = 0; x < image->width; ++x) {
            const size_t i = size_t(y) * size_t(image->stride) + size_t(x);
            image->green[i] = image->blue[i] = int64_t((x + 3 * y) % 1000) * 60;
            image->red[i] = image->green[i] + (x % 4 == 0 && y % 4 == 0 ? step : 0);
        }
    shell.image = std::move(image);
    Shell_EnterModule(&shell, *Module_FindByButton(Widget_PackId("BtAD")));
    Settle();
    const ShellModule& m = *shell.module;
    ASSERT_NE(m.small, nullptr);
    ASSERT_NE(m.smallResult, nullptr);
    const ImageBuffer& quick = *m.smallResult;
    bool colour = false;
    for (size_t i = 0; i < size_t(quick.stride) * size_t(quick.height); ++i)
        colour |= quick.red[i] != quick.green[i];
    EXPECT_TRUE(colour);
}

}  // namespace
