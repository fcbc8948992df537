// The dispatcher, driven through the real event ring on the test form: hit
// testing in pixels, pointer capture while dragging, keyboard focus and quick
// keys, the order in which posted events arrive, and redraws that touch only
// the widget that changed.
#include "ToolkitFixture.h"
#include "ui/Toolkit_AppEvent.h"
#include "ui/widgets/Button.h"
#include "ui/widgets/Field.h"
#include "ui/widgets/GestureArea.h"
#include "ui/widgets/Label.h"
#include "ui/widgets/LevelSetter.h"

namespace {

int g_presses = 0;
void CountPress(Toolkit*, Widget*, void*) {
    ++g_presses;
}

TEST_F(ToolkitTest, HitTestFindsTheDeepestControlAndPressesReleasesAndDragsGoWhereThePressLanded) {
    Widget* keep = W("BtKp");
    const PixelRect r = R(keep);
    EXPECT_EQ(Toolkit_HitTest(tk.get(), tk->root.get(), r.x, r.y), keep);
    EXPECT_EQ(Toolkit_HitTest(tk.get(), tk->root.get(), r.x + r.width - 1, r.y + r.height - 1), keep);
    // One pixel past the right edge is the next button, not this one.
    EXPECT_NE(Toolkit_HitTest(tk.get(), tk->root.get(), r.x + r.width, r.y), keep);
    // The setter's own labels do not take the pointer: the setter does.
    Widget* setter = W("LvS0");
    const PixelRect caption = R(Widget_Record<LevelSetterRecord>(setter)->captionLabel);
    EXPECT_EQ(Toolkit_HitTest(tk.get(), tk->root.get(), caption.x + 2, caption.y + 2), setter);
    // A plain label, and a gesture area with nothing bound, let the pointer through.
    const PixelRect title = R(W("Titl"));
    EXPECT_EQ(Toolkit_HitTest(tk.get(), tk->root.get(), title.x + 2, title.y + 2), nullptr);
    EXPECT_EQ(Toolkit_HitTest(tk.get(), tk->root.get(), -1, 5), nullptr);
    EXPECT_EQ(Toolkit_HitTest(tk.get(), tk->root.get(), width, 5), nullptr);
    // A button presses on release over it only.
    Button_SetCallback(keep, CountPress, nullptr);
    g_presses = 0;
    Press(r.x + 5, r.y + 5);
    EXPECT_TRUE(Widget_Record<ButtonRecord>(keep)->pressed);
    EXPECT_EQ(tk->input.capture, keep);
    // Dragged off, it shows released, and letting go there does nothing.
    Drag(r.x - 40, r.y - 40);
    EXPECT_FALSE(Widget_Record<ButtonRecord>(keep)->pressed);
    Release(r.x - 40, r.y - 40);
    EXPECT_EQ(g_presses, 0);
    EXPECT_EQ(tk->input.capture, nullptr);
    Click(keep);
    EXPECT_EQ(g_presses, 1);
    Button_SetEnabled(tk.get(), keep, false);
    Click(keep);
    EXPECT_EQ(g_presses, 1);
    // Drags and the release go to the widget the press landed on.
    const LevelSetterTrack t = LevelSetter_Track(tk.get(), setter);
    Press(t.left, t.centreY);
    EXPECT_EQ(LevelSetter_Value(setter), 0u);
    // Far outside the setter, over the view: the setter still follows.
    Drag(t.right + 300, t.centreY + 200);
    EXPECT_EQ(LevelSetter_Value(setter), 200u);
    EXPECT_EQ(tk->input.capture, setter);
    Release(10, 10);
    EXPECT_EQ(LevelSetter_Value(setter), 0u);  // the release's own column is left of the track
    EXPECT_FALSE(Widget_Record<LevelSetterRecord>(setter)->dragging);
    EXPECT_EQ(tk->input.capture, nullptr);
    // A drag with no press before it reaches nobody.
    Drag(t.right, t.centreY);
    EXPECT_EQ(LevelSetter_Value(setter), 0u);
}

TEST_F(ToolkitTest, QuickKeysActivateTheirControlAndFocusFollowsThePressAndTab) {
    Button_SetCallback(W("BtKp"), CountPress, nullptr);
    g_presses = 0;
    Key('k');
    EXPECT_EQ(g_presses, 1);
    // "f" is the field's quick key: it focuses the field.
    Key('f');
    EXPECT_EQ(tk->input.focus, W("Fld0"));
    // Now characters go into the field, quick key or not.
    Key('k');
    EXPECT_EQ(g_presses, 1);
    EXPECT_EQ(*Field_Text(W("Fld0")), "42k");
    // Enter on a focused button presses it.
    Toolkit_SetFocus(tk.get(), W("BtKp"));
    Key(kKeyEnter);
    EXPECT_EQ(g_presses, 2);
    // Focus follows the press, and Tab walks the controls in order.
    Widget* field = W("Fld0");
    Click(field);
    EXPECT_EQ(tk->input.focus, field);
    Key(kKeyTab);
    EXPECT_EQ(tk->input.focus, W("Fml0"));
    // The multi-line field takes Enter as a new line; Tab is not text there either.
    Field_SetText(tk.get(), W("Fml0"), "");
    Type("Ha");
    Key(kKeyEnter);
    Type("OIII");
    Key(kKeyTab);
    EXPECT_EQ(*Field_Text(W("Fml0")), "Ha\nOIII");
    EXPECT_EQ(tk->input.focus, W("Lst0"));
    Key(kKeyTab);
    EXPECT_EQ(tk->input.focus, W("BtCl"));
    Toolkit_FocusNext(tk.get(), true);
    EXPECT_EQ(tk->input.focus, W("Lst0"));
    // From the last control Tab wraps to the first.
    Toolkit_SetFocus(tk.get(), W("BtFl"));
    Key(kKeyTab);
    EXPECT_EQ(tk->input.focus, W("LvS0"));
    // A label is never focused.
    EXPECT_FALSE(Widget_IsFocusable(W("Titl")));
}

std::vector<uint32_t> g_codes;
void Record(Toolkit*, Widget*, uint32_t code, int32_t x, int32_t y, void*) {
    g_codes.push_back(code);
    g_codes.push_back(uint32_t(x));
    g_codes.push_back(uint32_t(y));
}

TEST_F(ToolkitTest, EventsArriveInTheOrderTheyWerePostedAndTicksReachApplets) {
    GestureArea_SetCallback(W("Gstr"), Record, nullptr);
    g_codes.clear();
    // Several posted before one dispatch; the handler sees them in order.
    Toolkit_PostPointer(tk.get(), 100, 100, true);
    Toolkit_PostPointer(tk.get(), 110, 104, true);
    Toolkit_PostPointer(tk.get(), 120, 108, true);
    Toolkit_PostPointer(tk.get(), 130, 112, false);
    Toolkit_PostPointer(tk.get(), 140, 116, false);  // a move with the button up posts nothing
    EXPECT_EQ(Toolkit_PendingEvents(tk.get()), 4u);
    Toolkit_Dispatch(tk.get());
    EXPECT_EQ(g_codes, (std::vector<uint32_t>{kEventPress, 100, 100, kEventDrag, 110, 104, kEventDrag, 120,
                                              108, kEventRelease, 130, 112}));
    EXPECT_EQ(Toolkit_PendingEvents(tk.get()), 0u);
    // Ticks reach applets.
    std::vector<std::pair<uint32_t, uint32_t>> seen;  // ticks and elapsed of each call
    auto* record = Widget_Record<AppletRecord>(W("Aplt"));
    record->user = &seen;
    record->onTick = [](Toolkit*, Widget*, uint32_t ticks, uint32_t elapsed, void* user) {
        static_cast<std::vector<std::pair<uint32_t, uint32_t>>*>(user)->emplace_back(ticks, elapsed);
    };
    Post(kEventTick, 1, 0, 0);
    // Ticks that piled up while the handler was busy arrive as one event with their count.
    AppEvent tick{kAppEventTick, {3}};
    Toolkit_OnAppEvent(tk.get(), &tick);
    EXPECT_EQ(seen, (std::vector<std::pair<uint32_t, uint32_t>>{{1, 1}, {3, 4}}));
}

// A redraw touches only the widget that changed: invalidating the form-wide
// widgets that draw nothing (applet, gesture area, numeric keyboard) leaves
// the screen alone.
TEST_F(ToolkitTest, ARedrawTouchesOnlyTheWidgetThatChangedAndAResizeDrawsEverything) {
    // A value no drawing writes (its low bits break the 5-6-5 rule) marks untouched pixels.
    constexpr uint32_t kMark = 0x00010101;
    const PixelRect title = R(W("Titl"));
    for (uint32_t& p : framebuffer) p = kMark;
    for (const char* id : {"Aplt", "Gstr", "KbNm"}) Toolkit_Invalidate(tk.get(), W(id));
    Label_SetText(tk.get(), W("Titl"), "Changed title");
    Toolkit_Dispatch(tk.get());
    // Every pixel of the label is drawn, and none outside it.
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            const bool inside =
                x >= title.x && y >= title.y && x < title.x + title.width && y < title.y + title.height;
            ASSERT_EQ(Pixel(x, y) != kMark, inside) << "at " << x << "," << y;
        }
    // A resize lays the form out again and draws all of it.
    std::vector<uint32_t> larger(1024u * 600u, 0);
    Toolkit_SetScreen(tk.get(), 1024, 600, 1024, larger.data());
    Toolkit_PostEvent(tk.get(), tk->root.get(), kEventResized);
    Toolkit_PostEvent(tk.get(), tk->root.get(), kEventDraw);
    Toolkit_Dispatch(tk.get());
    const PixelRect row = R(W("TsBt"));
    EXPECT_EQ(row.y + row.height, 600);
    // Every pixel was drawn, and kept to the 5-6-5 rule.
    for (uint32_t p : larger) ASSERT_EQ(p & 0x070307u, 0u);
}

}  // namespace
