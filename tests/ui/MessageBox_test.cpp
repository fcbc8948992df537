// Message boxes and the progress dialog over the test form: the identifier
// from the title, the equal button row, icons by type, the callback with the
// index of the button pressed, boxes opened from boxes and the saved-state
// stack of 9, and the progress dialog's cancel flag.
#include "ui/MessageBox.h"
#include "ToolkitFixture.h"
#include "ui/ProgressDialog.h"
#include "ui/widgets/Button.h"
#include "ui/widgets/Label.h"

namespace {

std::vector<uint32_t> g_pressed;
// The box hands back the pointer it was given: the pressed buttons go where the caller said.
void Remember(Toolkit*, uint32_t index, void* user) {
    static_cast<std::vector<uint32_t>*>(user)->push_back(index);
}

TEST(MessageBoxIcons, ByType) {
    const char* const expected[] = {kIconWarning, kIconInformation, kIconError,
                                    kIconSuccess, nullptr,          kIconInformation};
    for (uint32_t type = 0; type < 6; ++type) EXPECT_STREQ(MessageBox_IconName(type), expected[type]) << type;
    EXPECT_STREQ(MessageBox_IconName(0xFFFFFFFF), kIconInformation);
}

TEST_F(ToolkitTest, TheBoxIsNamedByTheFirstFourCharactersOfItsTitleAndItsLabelsAreExpanded) {
    Widget* box = MessageBox_Show(tk.get(), kCloseTitle, kCloseText, 2, Remember, &g_pressed, 2, kCloseButton,
                                  kCancelButton);
    EXPECT_EQ(box->id, Widget_PackId("Clos"));
    EXPECT_EQ(box->type, uint32_t(kWidgetForm));
    EXPECT_EQ(Widget_FindById(tk->root.get(), Widget_PackId("Clos")), box);
    Widget* shortTitle =
        MessageBox_Show(tk.get(), "Hey", "A short title still shows.", 1, Remember, &g_pressed, 1, "OK");
    EXPECT_EQ(shortTitle->id, 0u);
    EXPECT_EQ(tk->currentForm, shortTitle);
    Toolkit_Dispatch(tk.get());
    // Button labels are expanded for entities.
    Entity_Define(&tk->markupEntities, "&language-buttonlast;", "Last");
    box = MessageBox_Show(tk.get(), "Compare", "Sch&ouml;n", 1, Remember, &g_pressed, 2,
                          "&language-buttonlast;", "&language-buttonunknown;");
    std::vector<Widget*> b = MessageBox_Buttons(box);
    EXPECT_EQ(Widget_Record<ButtonRecord>(b[0])->text, "Last");
    EXPECT_EQ(Widget_Record<ButtonRecord>(b[1])->text, "&language-buttonunknown;");
    EXPECT_EQ(Toolkit_ExpandText(tk.get(), "Sch&ouml;n &amp; klar"), "Sch\xC3\xB6n & klar");
    // A plain "&" with no ";" near it does not stop the references after it.
    const std::string far = "Tom & Jerry" + std::string(70, '.');
    EXPECT_EQ(Toolkit_ExpandText(tk.get(), far + "&language-buttonlast;"), far + "Last");
}

void Nested(Toolkit* toolkit, uint32_t, void*) {
    // A callback may open the next box at once: the first is already gone.
    MessageBox_Show(toolkit, "Next", "Opened from the callback.", 1, Remember, &g_pressed, 1, "OK");
}

TEST_F(ToolkitTest, CallbackGetsThePressedIndexMayOpenAnotherBoxAndEnterPressesTheLast) {
    g_pressed.clear();
    Widget* box = MessageBox_Show(tk.get(), "Save", "Three buttons.", 0, Remember, &g_pressed, 3, "Yes", "No",
                                  "Cancel");
    Toolkit_Dispatch(tk.get());
    // Controls beneath the box no longer take the pointer.
    Widget* keep = W("BtKp");
    const PixelRect k = R(keep);
    Press(k.x + 3, k.y + 3);
    EXPECT_EQ(tk->input.capture, nullptr);
    Release(k.x + 3, k.y + 3);
    Click(MessageBox_Buttons(box)[1]);
    EXPECT_EQ(g_pressed, std::vector<uint32_t>{1});
    EXPECT_EQ(Widget_FindById(tk->root.get(), Widget_PackId("Save")), nullptr);
    EXPECT_EQ(tk->currentForm, tk->root.get());
    EXPECT_EQ(tk->savedCount, 0u);
    // The form beneath takes the pointer again.
    Press(k.x + 3, k.y + 3);
    EXPECT_EQ(tk->input.capture, keep);
    Release(k.x + 3, k.y + 3);
    // A callback may open another box; Enter presses the last button.
    box = MessageBox_Show(tk.get(), "Asks", "Then asks again.", 1, Nested, &g_pressed, 1, "Go");
    Click(MessageBox_Buttons(box)[0]);
    ASSERT_NE(tk->currentForm, tk->root.get());
    EXPECT_EQ(tk->currentForm->id, Widget_PackId("Next"));
    EXPECT_EQ(tk->savedCount, 1u);
    g_pressed.clear();
    MessageBox_Show(tk.get(), kOverwriteTitle, kOverwriteText, 2, Remember, &g_pressed, 2, kOverwriteButton,
                    kCancelButton);
    Key(kKeyEnter);
    EXPECT_EQ(g_pressed, std::vector<uint32_t>{1});
}

// Each box covers the one beneath, whose buttons (one or two) lie under its
// row: a press goes to the box on top, which closes back to the one beneath.
// The tenth is shown though the stack of saved states is full.
TEST_F(ToolkitTest, NestedBoxesCloseBackInTurnATenthIsShownAndTheButtonsShareTheRowEqually) {
    std::vector<Widget*> boxes;
    for (int i = 0; i < 10; ++i) {
        const std::string title = "Box " + std::to_string(i);
        boxes.push_back(MessageBox_ShowLabels(tk.get(), title.c_str(), "Nested.", kIconAlert, Remember,
                                              &g_pressed, std::vector<std::string>(1 + i % 2, "OK")));
    }
    Toolkit_Dispatch(tk.get());
    EXPECT_EQ(tk->savedCount, kToolkitSavedStates);
    for (uint32_t i = 0; i < kToolkitSavedStates; ++i)
        EXPECT_EQ(tk->savedStates[i].form, i > 0 ? boxes[i - 1] : tk->root.get()) << i;
    EXPECT_EQ(tk->currentForm, boxes[9]);
    g_pressed.clear();
    for (int i = 9; i >= 0; --i) {
        Click(MessageBox_Buttons(boxes[size_t(i)])[0]);
        EXPECT_EQ(tk->currentForm, i > 0 ? boxes[size_t(i - 1)] : tk->root.get()) << i;
        EXPECT_EQ(tk->savedCount, uint32_t(i)) << i;
    }
    EXPECT_EQ(g_pressed, std::vector<uint32_t>(10, 0));
    // The buttons share the row equally.
    // n cells of 32768 / (buttons still to place) fill the row exactly: 32768 / 3, then 21846 / 2, then the
    // rest.
    const std::vector<std::vector<uint32_t>> widths = {{kUnitsWhole}, {16384, 16384}, {10922, 10923, 10923}};
    for (const std::vector<uint32_t>& expected : widths) {
        Widget* box = MessageBox_ShowLabels(tk.get(), "Save", "Buttons.", kIconAlert, Remember, &g_pressed,
                                            std::vector<std::string>(expected.size(), "B"));
        uint32_t x = 0;
        for (size_t i = 0; i < expected.size(); ++i) {
            EXPECT_EQ(MessageBox_Buttons(box)[i]->x, x) << i;
            EXPECT_EQ(MessageBox_Buttons(box)[i]->width, expected[i]) << i;
            x += expected[i];
        }
    }
}

TEST_F(ToolkitTest, ProgressDialogCancelSetsTheKernelsFlag) {
    Widget* dialog = ProgressDialog_Show(tk.get(), "Stretching");
    EXPECT_EQ(dialog->id, Widget_PackId("Prog"));
    const KernelControl control = ProgressDialog_Control(dialog);
    EXPECT_FALSE(KernelControl_Cancelled(&control));
    // The kernel reports from its thread; the dialog shows it on the next tick.
    KernelControl_Report(&control, "Blur", 40);
    EXPECT_EQ(ProgressDialog_Percent(dialog), 40);
    Post(kEventTick, 1, 0, 0);
    Widget* cancel = ProgressDialog_CancelButton(dialog);
    ASSERT_NE(cancel, nullptr);
    EXPECT_EQ(Widget_Record<ButtonRecord>(cancel)->text, "Cancel");
    Click(cancel);
    EXPECT_TRUE(KernelControl_Cancelled(&control));
    EXPECT_TRUE(ProgressDialog_Cancelled(dialog));
    EXPECT_TRUE(Widget_Record<ButtonRecord>(cancel)->disabled);
    ProgressDialog_Close(tk.get(), dialog);
    Toolkit_Dispatch(tk.get());
    EXPECT_EQ(tk->currentForm, tk->root.get());
}

}  // namespace
