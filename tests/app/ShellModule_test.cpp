// The module framework in this process: a storm of setter changes during one
// computation ends with the newest values shown, and Cancel while a
// computation runs cancels it, waits for it and leaves the working image as it
// was; Keep while one runs waits for the exact result and commits that. Keep is
// greyed out until there is a result, and positions that give none (Bin at
// scale 0) leave the shown one. Rotate's grid marks the view's copy only, made
// again for a new zoom; "Crop corners" keeps and enters Crop with the corners.
// Crop, which computes nothing until Keep: its rectangle, status line, memory
// and marks. The quick preview of a colour image is in colour.
#include "AppRun.h"
#include "app/Shell_Module.h"
#include "host/Host_Threads.h"
#include "modules/ModuleTestImages.h"
#include "modules/Module_List.h"
#include "modules/crop/Crop_Params.h"
#include "modules/rotate/Rotate_InnerRect.h"
#include "ui/ToolkitFixture.h"
#include "ui/widgets/Button.h"
#include "ui/widgets/ImageView.h"
#include "ui/widgets/Label.h"
#include "ui/widgets/LevelSetter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <thread>
#include <tuple>

namespace {

// A shell with a toolkit over an 800 x 480 framebuffer and the built archive.
class ModuleFixture : public AppFolderTest {
protected:
    std::vector<uint32_t> pixels = std::vector<uint32_t>(size_t(800) * 480);
    Shell shell;

    void SetUp() override {
        shell.ui = ToolkitTest_Archived(800, 480, pixels.data());
        if (!shell.ui) GTEST_SKIP() << "no resources archive beside the tests";
        Shell_Install(&shell);
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
    // Presses a button as the pointer would: false when it is greyed out.
    bool Pressed(const char* id) {
        Widget* button = Find(id);
        auto* record = Widget_Record<ButtonRecord>(button);
        if (record->disabled) return false;
        record->onPress(shell.ui.get(), button, record->user);
        return true;
    }
    std::array<uint32_t, 4> Setters() {
        return {LevelSetter_Value(Find("LvS1")), LevelSetter_Value(Find("LvS2")),
                LevelSetter_Value(Find("LvS3")), LevelSetter_Value(Find("LvS4"))};
    }
};

class ShellModuleTest : public ModuleFixture {
protected:
    // Large enough that a computation takes a while, and is previewed binned first.
    ShellModuleTest() {
        shell.image = MakeImage(1600, 1200, 30, [](int32_t x, int32_t y, int) {
            return int64_t(((size_t(y) * 1600 + size_t(x)) * 2654435761u) % 1000003u) << 10;
        });
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
    Enter("BtAD");
    for (uint32_t v = 1; v <= 40; ++v) Move(v);
    Settle();
    const ShellModule& m = *shell.module;
    ASSERT_NE(m.result, nullptr);
    EXPECT_EQ(std::memcmp(m.resultParams.bytes, m.params.bytes, sizeof m.params.bytes), 0);
    EXPECT_EQ(ModuleParams_Get(m.def->params[0], m.resultParams.bytes), 40);
    EXPECT_EQ(Widget_Record<ImageViewRecord>(m.view)->image, m.shown ? m.shown.get() : m.result.get());
}

// Leaving while a computation runs: Cancel cancels it, waits for it and
// leaves the working image as it was; Keep waits for the exact result, under
// its progress dialog, and commits that.
TEST_F(ShellModuleTest, CancelOrKeepWhileComputing) {
    Enter("BtAD");
    Settle();
    const ImagePtr before(Image_Clone(shell.image.get()));
    Move(300);
    ASSERT_TRUE(shell.module->running);
    const std::shared_ptr<ShellModule> left = shell.module;
    Shell_LeaveModule(&shell, false);
    EXPECT_EQ(shell.module, nullptr);
    EXPECT_EQ(left->runStatus, ModuleRunStatus::kCancelled);
    EXPECT_EQ(Host_IsBackgroundRunning(), 0);
    EXPECT_EQ(ImageDifference(shell.image.get(), before.get()), "");
    EXPECT_FALSE(shell.undo.available);

    Enter("BtAD");
    Settle();
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
    EXPECT_EQ(ImageDifference(shell.image.get(), expected), "");
    EXPECT_TRUE(shell.undo.available);
}

TEST_F(ShellModuleTest, BinKeepWaitsForAResultAndScaleZeroLeavesTheShownOne) {
    Enter("BSBi");
    EXPECT_FALSE(Pressed("BtKp"));
    EXPECT_EQ(*Label_Text(Find("LbSz")), "Image Size 800 x 600 pixels");
    Settle();
    ASSERT_TRUE(Pressed("Bt35"));  // 3538: 1600 x 0.3538 = 566.08, 1200 x 0.3538 = 424.56
    EXPECT_EQ(*Label_Text(Find("LbSz")), "Image Size 566 x 424 pixels");
    Settle();
    const ImageBuffer* shown = Widget_Record<ImageViewRecord>(shell.module->view)->image;
    ASSERT_EQ(std::tuple(shown->width, shown->height), std::tuple(566, 424));
    Move(0);
    Settle();
    EXPECT_EQ(Widget_Record<ImageViewRecord>(shell.module->view)->image, shown);
    EXPECT_TRUE(Pressed("BtKp"));  // nothing to commit for a scale of 0
    EXPECT_FALSE(shell.undo.available);
}

TEST_F(ShellModuleTest, RotateGridMarksTheViewsCopyAgainForANewZoom) {
    Enter("BtRt");
    Settle();
    const auto gridPixels = [&] {
        const ShellModule& m = *shell.module;
        EXPECT_EQ(Widget_Record<ImageViewRecord>(m.view)->image, m.shown.get());
        size_t n = 0;
        for (size_t i = 0; i < size_t(m.result->stride) * size_t(m.result->height); ++i)
            n += m.shown->red[i] != m.result->red[i];
        return n;
    };
    const size_t fitted = gridPixels();
    EXPECT_GT(fitted, 0u);
    ASSERT_TRUE(Pressed("BtZ+"));
    const size_t zoomed = gridPixels();
    EXPECT_GT(zoomed, 0u);
    EXPECT_NE(zoomed, fitted);
}

// "Crop corners" is greyed out at the quarter turns; off them it keeps the
// turned image and enters Crop with the rectangle free of black corners, on
// its setters and in its status line (its changed hook ran).
TEST_F(ShellModuleTest, CropCornersKeepsTheTurnAndEntersCropWithTheInnerRectangle) {
    shell.outcome = {false, false};  // Crop's plain status line
    Enter("BtRt");
    EXPECT_FALSE(Pressed("BtCC"));
    Move(900);
    EXPECT_FALSE(Pressed("BtCC"));
    Move(125);
    const RotateRect r = Rotate_InnerRect(1600, 1200, 12.5);
    ASSERT_TRUE(Pressed("BtCC"));
    Settle();  // Keep waits for the exact turn
    ASSERT_NE(shell.module, nullptr);
    EXPECT_EQ(shell.module->def, Module_FindByButton(Widget_PackId("BSCr")));
    EXPECT_TRUE(shell.undo.available);
    EXPECT_EQ(std::tuple(shell.image->width, shell.image->height), std::tuple(1821, 1517));
    EXPECT_EQ(Setters(), (std::array{uint32_t(r.x0), uint32_t(r.y0), uint32_t(r.x1), uint32_t(r.y1)}));
    EXPECT_EQ(*Label_Text(Find("LbSz")), "Click & drag to crop. New image is " +
                                             std::to_string(r.x1 - r.x0 + 1) + " x " +
                                             std::to_string(r.y1 - r.y0 + 1) + " pixels.");
}

// Crop on a 200 x 150 gradient (red = x << 20), small enough to be shown whole.
class CropScreenTest : public ModuleFixture {
protected:
    CropScreenTest() {
        shell.image = Gradient(200, 150);
        shell.outcome = {false, false};  // shown as it is, not stretched
    }
    static ImagePtr Gradient(int32_t w, int32_t h) {
        return MakeImage(w, h, 30, [](int32_t x, int32_t y, int c) { return int64_t(c ? y + c : x) << 20; });
    }
    void Drag(int32_t x, int32_t y, int32_t w, int32_t h) {
        shell.module->def->screen->region(&shell.module->screen, {x, y, w, h});
    }
    std::string Text(const char* id) {
        Widget* w = Find(id);
        return w->type == kWidgetButton ? Widget_Record<ButtonRecord>(w)->text : *Label_Text(w);
    }
    int64_t Shown(int c, int32_t x, int32_t y) { return Pixel(shell.module->shown.get(), c, x, y); }
};

// Linear tracked data is shown stretched, as grey luminance until the toggle
// (greyed out otherwise) asks for colour.
TEST_F(CropScreenTest, StatusLineAndViewToggleFollowTheData) {
    const char* kStatus = "Click & drag to crop. New image is 200 x 150 pixels.";
    const std::tuple<bool, bool, std::string> cases[] = {
        {true, true, std::string(kStatus) + " Please check color too (courtesy AutoDev applied)."},
        {true, false, kStatus},
        {false, true, kStatus}};
    for (const auto& [linear, tracking, status] : cases) {
        shell.outcome = {linear, tracking};
        Enter("BSCr");
        EXPECT_EQ(Text("LbSz"), status);
        const bool stretched = linear && tracking;
        EXPECT_EQ(Widget_Record<ButtonRecord>(Find("BtLU"))->disabled, !stretched);
        if (stretched) {
            EXPECT_EQ(std::pair(Text("BtLU"), Shown(0, 150, 20)),
                      std::pair(std::string("Colour"), Shown(2, 150, 20)));
            EXPECT_TRUE(Pressed("BtLU"));
            EXPECT_EQ(Text("BtLU"), "Luminance");
            EXPECT_NE(Shown(0, 150, 20), Shown(2, 150, 20));
        }
        Shell_LeaveModule(&shell, false);
    }
}

// A drag writes the corners and the marks follow (a third outside, the edge at
// full scale), as they do for positions set from outside (changed with 0); a
// grow to 3:2 at the bottom edge moves the rectangle up; "Whole Image" resets.
TEST_F(CropScreenTest, DragOutsideChangesAndAspectMoveTheRectangleAndItsMarks) {
    Enter("BSCr");
    Drag(20, 10, 50, 40);
    EXPECT_EQ(Setters(), (std::array{20u, 10u, 69u, 49u}));
    EXPECT_EQ(Text("LbSz"), "Click & drag to crop. New image is 50 x 40 pixels.");
    EXPECT_EQ((std::array{Shown(0, 150, 100), Shown(0, 40, 30), Shown(0, 20, 30)}),
              (std::array{(int64_t(150) << 20) / 3, int64_t(40) << 20, int64_t(1073741823)}));
    *reinterpret_cast<CropParams*>(shell.module->params.bytes) = {100, 50, 149, 99};
    shell.module->def->screen->changed(&shell.module->screen, 0);
    EXPECT_EQ(Text("LbSz"), "Click & drag to crop. New image is 50 x 50 pixels.");
    EXPECT_EQ(std::pair(Shown(0, 40, 30), Shown(0, 120, 70)),
              std::pair((int64_t(40) << 20) / 3, int64_t(120) << 20));
    Drag(0, 100, 200, 50);
    EXPECT_TRUE(Pressed("BtP4"));
    EXPECT_EQ(Setters(), (std::array{0u, 18u, 199u, 149u}));
    EXPECT_TRUE(Pressed("BtRs"));
    EXPECT_EQ(std::pair(Setters(), Text("LbSz")),
              std::pair(std::array{0u, 0u, 199u, 149u},
                        std::string("Click & drag to crop. New image is 200 x 150 pixels.")));
}

// The first entry after a load that found a stacking border starts from the
// box inside it; later the rectangle comes back for the same size only.
TEST_F(CropScreenTest, ArtefactBoxFirstThenTheRectangleForTheSameSizeOnly) {
    shell.artefacts = true;
    shell.artefactBox = {5, 6, 190, 140};
    Enter("BSCr");
    EXPECT_EQ(Setters(), (std::array{5u, 6u, 189u, 139u}));
    Drag(20, 10, 50, 40);
    Shell_LeaveModule(&shell, false);
    // The image's width and height, the setters' positions on entering.
    const std::tuple<int32_t, int32_t, std::array<uint32_t, 4>> cases[] = {
        {200, 150, {20, 10, 69, 49}}, {200, 151, {0, 0, 199, 150}}, {201, 150, {0, 0, 200, 149}}};
    for (const auto& [width, height, setters] : cases) {
        shell.image = Gradient(width, height);
        Enter("BSCr");
        EXPECT_EQ(Setters(), setters) << width << " x " << height;
        Shell_LeaveModule(&shell, false);
    }
}

// Keep cuts image and mask as one undoable step; a zero side only closes.
TEST_F(CropScreenTest, KeepCutsImageAndMaskAndAZeroSideOnlyCloses) {
    // The drag (x, y, width, height), the size the image and the mask have after Keep.
    const std::tuple<std::array<int32_t, 4>, int32_t, int32_t> cases[] = {
        {{20, 10, 50, 40}, 50, 40}, {{30, 5, 1, 60}, 200, 150}, {{30, 5, 60, 1}, 200, 150}};
    for (const auto& [drag, width, height] : cases) {
        shell.image = Gradient(200, 150);
        shell.mask = Gradient(200, 150);
        shell.undo = {};
        Enter("BSCr");
        Drag(drag[0], drag[1], drag[2], drag[3]);
        EXPECT_TRUE(Pressed("BtKp"));
        EXPECT_EQ(
            std::tuple(shell.image->width, shell.mask->height, shell.mask->red[0], shell.undo.available),
            std::tuple(width, height, int64_t(width == 50 ? 20 : 0) << 20, width == 50));
    }
}

// Colour in one pixel of every 4 x 4 block, one step of the monochrome test
// above grey: the binned copy averages it below the step. Whether the image
// is monochrome is the entered image's, not the quick copy's.
TEST_F(ShellModuleTest, TheQuickPreviewKeepsColourThatBinningAveragesAway) {
    Shell_LeaveModule(&shell, false);
    shell.image = MakeImage(1600, 1200, 16, [](int32_t x, int32_t y, int c) {
        const int64_t step = int64_t{1} << (16 - 8);
        return int64_t((x + 3 * y) % 1000) * 60 + (c == 0 && x % 4 == 0 && y % 4 == 0 ? step : 0);
    });
    Shell_EnterModule(&shell, *Module_FindByButton(Widget_PackId("BtAD")));
    Settle();
    const ShellModule& m = *shell.module;
    ASSERT_NE(m.small, nullptr);
    ASSERT_NE(m.smallResult, nullptr);
    const ImageBuffer& quick = *m.smallResult;
    EXPECT_FALSE(std::equal(quick.red, quick.red + size_t(quick.stride) * size_t(quick.height), quick.green));
}

}  // namespace
