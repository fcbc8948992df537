// The toolkit's face, rendered through the headless backend and compared with
// reviewed pictures in tests/golden/<name>/expected.png: the test form and
// message boxes with one, two and three buttons at 800 x 480 and 1920 x 1080,
// and a pointer script that drags a level setter and types into a field.
// Text may differ by one 5-bit level between compilers; fills may not differ
// more than that either. PELLUCIDA_REBASELINE=1 rewrites the pictures.
#include "DrawCanvas.h"
#include "ToolkitFixture.h"
#include "host/HostFixture.h"
#include "ui/MessageBox.h"
#include "ui/ProgressDialog.h"
#include "ui/Toolkit_AppEvent.h"
#include "ui/widgets/LevelSetter.h"

#include <fstream>

namespace {

struct Session {
    std::unique_ptr<Toolkit> toolkit;
    TestFormContent content;
    std::string archive;
};
Session* g_session = nullptr;

int Handler(AppEvent* event) {
    Session* s = g_session;
    if (event->kind == kAppEventStart) {
        int code = 0;
        s->toolkit = Toolkit_CreateWithArchive(Resources_OpenPath(s->archive.c_str(), &code));
        TestForm_Load(s->toolkit.get(), &s->content);
        return 0;
    }
    return Toolkit_OnAppEvent(s->toolkit.get(), event);
}

class ToolkitGolden : public testing::Test {
protected:
    Session session;

    void Start(uint32_t width, uint32_t height) {
        session.archive = ToolkitTest_ArchivePath();
        if (session.archive.empty()) GTEST_SKIP() << "no resources archive beside the test program";
        g_session = &session;
        ASSERT_TRUE(Host_SelectBackend("headless"));
        Headless_Reset();
        Headless_SetAutoTicks(false);
        Headless_SetInitialSize(width, height);
        Host_CreateMainWindow();
        ASSERT_TRUE(Host_Init(Handler));
        HostTest_Settle(400);
        ASSERT_NE(session.toolkit, nullptr);
    }

    void TearDown() override { ToolkitTest_EndHosted(g_session); }

    Toolkit* tk() { return session.toolkit.get(); }

    void Compare(const std::string& name) {
        const std::string shot = DrawTest_ShotPath(name);
        ASSERT_TRUE(Headless_SaveScreen(shot.c_str()));
        CompareGolden(shot, name);  // within one 5-bit level
    }
};

void Ignore(Toolkit*, uint32_t, void*) {}

void ShowBox(Toolkit* tk, int buttons) {
    if (buttons == 1)
        MessageBox_Show(tk, "Image saved", "The image was saved as M42_final.tif (16 bits per channel).",
                        kMessageBoxSuccess, Ignore, nullptr, 1, "OK");
    else if (buttons == 2)
        MessageBox_Show(tk, kCloseTitle, kCloseText, kMessageBoxError, Ignore, nullptr, 2, kCloseButton,
                        kCancelButton);
    else
        MessageBox_Show(
            tk, "Unsaved changes",
            "The image has changes that are not saved yet. Save them before loading another image?",
            kMessageBoxWarning, Ignore, nullptr, 3, "Save", "Discard", kCancelButton);
}

// The test form alone (no buttons), then with each box over it.
TEST_F(ToolkitGolden, TestFormAndMessageBoxes) {
    for (int buttons = 0; buttons <= 3; ++buttons) {
        for (auto [width, height] : {std::pair{800u, 480u}, {1920u, 1080u}}) {
            const std::string size = std::to_string(width) + "x" + std::to_string(height);
            SCOPED_TRACE(std::to_string(buttons) + " " + size);
            Start(width, height);
            if (buttons > 0) {
                ShowBox(tk(), buttons);
                Toolkit_Dispatch(tk());
            }
            Compare((buttons ? "messagebox" + std::to_string(buttons) : std::string("testform")) + "_" +
                    size);
            TearDown();
        }
    }
}

TEST_F(ToolkitGolden, ProgressDialog) {
    Start(800, 480);
    Widget* dialog = ProgressDialog_Show(tk(), "Stretching the image");
    const KernelControl control = ProgressDialog_Control(dialog);
    KernelControl_Report(&control, "AutoDev: colour step", 62);
    Toolkit_PostEvent(tk(), tk()->root.get(), kEventTick, 1);
    Toolkit_Dispatch(tk());
    Compare("progress_800x480");
}

// The headless script drags the second level setter from its start to about
// two thirds, then clicks the field and replaces its text: what a user does.
TEST_F(ToolkitGolden, PointerScriptDragsASetterAndTypes) {
    Start(800, 480);
    Widget* setter = Widget_FindById(tk()->root.get(), Widget_PackId("LvS1"));
    Widget* field = Widget_FindById(tk()->root.get(), Widget_PackId("Fld0"));
    ASSERT_NE(setter, nullptr);
    ASSERT_NE(field, nullptr);
    const LevelSetterTrack t = LevelSetter_Track(tk(), setter);
    const PixelRect f = Widget_PixelRect(tk(), field);
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / "pellucida-toolkit-script.txt";
    {
        std::ofstream script(path);
        const int32_t from = t.left + (t.right - t.left) / 10;
        const int32_t to = t.left + (t.right - t.left) * 2 / 3;
        script << "press " << from << ' ' << t.centreY << '\n';
        for (int32_t x = from; x <= to; x += 6) script << "move " << x << ' ' << t.centreY + (x % 3) << '\n';
        script << "release " << to << ' ' << t.centreY << '\n';
        script << "click " << f.x + f.width - 3 << ' ' << f.y + f.height / 2 << '\n';
        script << "key backspace\nkey backspace\nchar 1\nchar 2\nchar 0\nwait\n";
    }
    ASSERT_TRUE(Headless_LoadScript(path.string().c_str()));
    int stop = 0;
    for (int i = 0; i < 2000 && !stop; ++i) stop = Host_LoopPass();
    EXPECT_EQ(stop, 1) << "the script did not end with the window closed";
    std::filesystem::remove(path);
    // The effect, before the picture: the setter moved, the field holds the new text.
    const auto* s = Widget_Record<LevelSetterRecord>(setter);
    EXPECT_EQ(s->value, LevelSetter_PositionAt(tk(), setter, t.left + (t.right - t.left) * 2 / 3));
    EXPECT_FALSE(s->dragging);
    EXPECT_EQ(Widget_Record<FieldRecord>(field)->text, "120");
    Compare("script_drag_type_800x480");
}

}  // namespace
