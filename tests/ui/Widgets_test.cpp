// Each widget kind's behaviour on the test form, driven through the event
// ring by identifier: fields and their caret, selectors and their captions,
// level setters and their value labels, lists, the image view's zoom, pan and
// regions, the histogram's bins.
#include "ToolkitFixture.h"
#include "support/TestImages.h"
#include "ui/Theme.h"
#include "ui/widgets/Field.h"
#include "ui/widgets/Histogram.h"
#include "ui/widgets/ImageView.h"
#include "ui/widgets/Label.h"
#include "ui/widgets/LevelSetter.h"
#include "ui/widgets/List.h"
#include "ui/widgets/Selector.h"

#include <numeric>

namespace {

TEST(FieldEditing, CaretInsertsDeletesWholeCharactersAndRefusesControls) {
    // Keys in turn from "a|b": whether each is taken, then the text and the caret. The
    // o-umlaut is two bytes, and Backspace removes both.
    const struct {
        uint32_t key;
        bool multiLine, taken;
        const char* text;
        size_t caret;
    } steps[] = {{'X', false, true, "aXb", 2},           {0xF6, false, true, "aX\u00F6b", 4},
                 {kKeyBackspace, false, true, "aXb", 2}, {kKeyEnter, false, false, "aXb", 2},
                 {kKeyTab, false, false, "aXb", 2},      {127, false, false, "aXb", 2},
                 {kKeyEnter, true, true, "aX\nb", 3}};
    std::string text = "ab";
    size_t caret = 1;
    for (const auto& step : steps) {
        EXPECT_EQ(Field_EditKey(&text, &caret, step.key, step.multiLine), step.taken) << step.key;
        EXPECT_EQ(std::pair(text, caret), std::pair(std::string(step.text), step.caret)) << step.key;
    }
    caret = 0;
    EXPECT_TRUE(Field_EditKey(&text, &caret, kKeyBackspace, false));
    EXPECT_EQ(text, "aX\nb");
}

TEST_F(ToolkitTest, FieldTakesTypingWithTheCaretWhereThePointerPutIt) {
    Widget* field = W("Fld0");
    int entered = 0;
    auto* record = Widget_Record<FieldRecord>(field);
    record->user = &entered;
    record->onEnter = [](Toolkit*, Widget*, void* user) { ++*static_cast<int*>(user); };
    Click(field);
    // The text is right-aligned: a press in the middle of the field lands before it.
    EXPECT_EQ(record->caret, 0u);
    Type("1");
    EXPECT_EQ(*Field_Text(field), "142");
    const PixelRect r = R(field);
    Tap(r.x + r.width - 2, r.y + r.height / 2);
    Type("0");
    Key(kKeyBackspace);
    Key(kKeyBackspace);
    EXPECT_EQ(*Field_Text(field), "14");
    Key(kKeyEnter);
    EXPECT_EQ(entered, 1);
    EXPECT_EQ(*Field_Text(field), "14");
}

TEST_F(ToolkitTest, SelectorCyclesBothWaysAndPairsWithItsCaptionAndListChoosesTheRowUnderThePointer) {
    Widget* selector = W("SlS0");
    ASSERT_NE(Selector_Item(selector), nullptr);
    EXPECT_EQ(*Selector_Item(selector), "Linear");
    const PixelRect r = R(selector);
    Tap(r.x + r.width - 4, r.y + r.height / 2);
    EXPECT_EQ(*Selector_Item(selector), "Stretched");
    Click(selector);
    Click(selector);
    EXPECT_EQ(*Selector_Item(selector), "Linear");  // wrapped past the last item
    Tap(r.x + 3, r.y + r.height / 2);
    EXPECT_EQ(*Selector_Item(selector), "Unknown");  // backwards from the first
    // "SlS0" minus 0x070A0000 is "LbS0"; "LvS0" minus 0x00140700 is "LbL0".
    EXPECT_EQ(Selector_CaptionId(Widget_PackId("SlS0")), Widget_PackId("LbS0"));
    EXPECT_EQ(Selector_CaptionId(Widget_PackId("SlS?")), Widget_PackId("LbS?"));
    EXPECT_EQ(LevelSetter_CaptionId(Widget_PackId("LvS0")), Widget_PackId("LbL0"));
    Widget* caption = Selector_CaptionLabel(form, selector);
    ASSERT_NE(caption, nullptr);
    EXPECT_EQ(*Label_Text(caption), "Data");
    // A list chooses the row under the pointer.
    Widget* list = W("Lst0");
    auto* record = Widget_Record<ListRecord>(list);
    EXPECT_EQ(record->selected, 1);
    const PixelRect l = R(list);
    const int32_t row = List_RowHeight(tk.get());
    const int32_t top = l.y + std::max(1, Theme_Gap(tk.get()) / 2) + 2;
    Tap(l.x + 10, top + 3 * row + row / 2);
    EXPECT_EQ(record->selected, 3);
    EXPECT_EQ(record->items[3], "Blue");
    // Below the last row nothing changes.
    Press(l.x + 10, l.y + l.height - 3);
    EXPECT_EQ(record->selected, 3);
}

TEST(ImageViewZoom, LevelsUpAndDownAsTheViewButtonsStepThem) {
    // {from, in, out}: the next level up and down; beyond the ends nothing changes.
    const int32_t steps[][3] = {{3200, 3200, 1600}, {5000, 5000, 5000}, {5, 10, 5},   {37, 50, 33},
                                {9, 10, 5},         {10, 25, 5},        {11, 25, 10}, {66, 100, 50},
                                {100, 150, 66},     {3201, 3201, 3201}};
    for (auto [from, in, out] : steps) {
        EXPECT_EQ(ImageView_ZoomInLevel(from), in) << from;
        EXPECT_EQ(ImageView_ZoomOutLevel(from), out) << from;
    }
}

TEST_F(ToolkitTest, LevelSetterDragsSmoothlyAndItsValueLabelFollows) {
    Widget* setter = W("LvS0");
    auto* record = Widget_Record<LevelSetterRecord>(setter);
    EXPECT_EQ(*Label_Text(record->valueLabel), "20% shadow dominant");
    EXPECT_EQ(*Label_Text(record->captionLabel), "Balance");
    std::vector<uint32_t> seen;
    record->user = &seen;
    record->onChange = [](Toolkit*, Widget* w, void* user) {
        static_cast<std::vector<uint32_t>*>(user)->push_back(LevelSetter_Value(w));
    };
    const LevelSetterTrack t = LevelSetter_Track(tk.get(), setter);
    int32_t mid = t.left;
    while (LevelSetter_PositionAt(tk.get(), setter, mid) < 100) ++mid;
    Press(t.left, t.centreY);
    EXPECT_EQ(*Label_Text(record->valueLabel), "200% shadow dominant");
    // Every pixel of travel gives its own position: no jumps between steps.
    for (int32_t x = t.left + 1; x <= mid; ++x) Drag(x, t.centreY + 7);
    Release(mid, t.centreY);
    EXPECT_EQ(LevelSetter_Value(setter), LevelSetter_PositionAt(tk.get(), setter, mid));
    EXPECT_GE(LevelSetter_Value(setter), 100u);
    EXPECT_LE(LevelSetter_Value(setter), 101u);
    ASSERT_GE(seen.size(), 2u);
    for (size_t i = 1; i < seen.size(); ++i) {
        EXPECT_GT(seen[i], seen[i - 1]);
        EXPECT_LE(seen[i] - seen[i - 1], 2u) << "a jump at " << i;
    }
    // Set by code: held to the range, the label follows, onChange does not fire.
    const size_t calls = seen.size();
    LevelSetter_SetValue(tk.get(), setter, 100);
    EXPECT_EQ(*Label_Text(record->valueLabel), "balanced");
    LevelSetter_SetValue(tk.get(), setter, 500);
    EXPECT_EQ(LevelSetter_Value(setter), 200u);
    EXPECT_EQ(*Label_Text(record->valueLabel), "200% highlight dominant");
    EXPECT_EQ(seen.size(), calls);
    // '+' and '-' step by one when it has the focus.
    Toolkit_SetFocus(tk.get(), setter);
    Key('-');
    EXPECT_EQ(LevelSetter_Value(setter), 199u);
}

TEST_F(ToolkitTest, ImageViewFitsZoomsPansAndReportsRegionsAndTheHistogramCountsEverySample) {
    Widget* view = W("View");
    auto* record = Widget_Record<ImageViewRecord>(view);
    const PixelRect r = R(view);
    // Fitted: the largest whole percentage at which all 480 x 320 pixels show.
    const int32_t fit = std::min(r.width * 100 / 480, r.height * 100 / 320);
    EXPECT_TRUE(record->fit);
    EXPECT_EQ(ImageView_Zoom(tk.get(), view), fit);
    int32_t ix = 0, iy = 0;
    EXPECT_TRUE(ImageView_ImagePoint(tk.get(), view, r.x + r.width / 2, r.y + r.height / 2, &ix, &iy));
    EXPECT_EQ(std::pair(ix, iy), std::pair(240, 160));
    // The screen shows the image through the table: the centre pixel is the table's value.
    const size_t centre = size_t(160) * size_t(content.image->stride) + 240;
    const uint32_t pixel = Pixel(r.x + r.width / 2, r.y + r.height / 2);
    EXPECT_NEAR(int((pixel >> 16) & 0xF8), int(content.lut[size_t(content.image->red[centre])]), 8);
    EXPECT_EQ(pixel & 0x070307u, 0u);
    // The view keeps what it drew; samples changed in place show once the image is set again.
    const int64_t before = content.image->red[centre];
    content.image->red[centre] = before ^ 0x8000;
    ImageView_SetImage(tk.get(), view, content.image.get(), content.lut.data());
    Toolkit_DrawAll(tk.get());
    EXPECT_NEAR(int((Pixel(r.x + r.width / 2, r.y + r.height / 2) >> 16) & 0xF8),
                int(content.lut[size_t(before ^ 0x8000)]), 8);
    content.image->red[centre] = before;

    ImageView_ZoomIn(tk.get(), view);
    EXPECT_EQ(record->zoom, ImageView_ZoomInLevel(fit));
    EXPECT_FALSE(record->fit);
    ImageView_SetZoom(tk.get(), view, 200);
    Toolkit_Dispatch(tk.get());
    // Dragging 40 pixels right at 200% moves the image 20 pixels under the pointer.
    Press(r.x + 100, r.y + 100);
    Drag(r.x + 140, r.y + 100);
    Release(r.x + 140, r.y + 100);
    EXPECT_TRUE(ImageView_ImagePoint(tk.get(), view, r.x + r.width / 2, r.y + r.height / 2, &ix, &iy));
    EXPECT_EQ(std::pair(ix, iy), std::pair(220, 160));

    std::vector<ImageRegion> got;
    ImageView_SetRegionCallback(
        view,
        [](Toolkit*, Widget*, const ImageRegion& r, void* user) {
            static_cast<std::vector<ImageRegion>*>(user)->push_back(r);
        },
        &got);
    ImageView_Fit(tk.get(), view);
    ImageView_SetZoom(tk.get(), view, 100);
    int32_t ax = 0, ay = 0;
    ImageView_ImagePoint(tk.get(), view, r.x + 50, r.y + 60, &ax, &ay);
    Press(r.x + 149, r.y + 99);  // dragged up and left: the region is still the same rectangle
    Drag(r.x + 90, r.y + 80);
    Release(r.x + 50, r.y + 60);
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(std::tuple(got[0].x, got[0].y, got[0].width, got[0].height), std::tuple(ax, ay, 100, 40));
    // The histogram counts every sample into NumBins.
    Widget* histogram = W("Hist");
    EXPECT_EQ(Histogram_BinCount(histogram), 256u);
    const int64_t values[8] = {0, 255, 256, 65535, 32768, 32767, 1000, 1000};  // green's first is 65535
    ImagePtr image = MakeImage(4, 2, 16, [&](int32_t x, int32_t y, int c) {
        return c == 1 && x + y == 0 ? 65535 : values[y * 4 + x];
    });
    Histogram_SetImage(tk.get(), histogram, image.get());
    const auto* bins = Widget_Record<HistogramRecord>(histogram)->bins;
    ASSERT_EQ(bins[0].size(), 256u);
    const std::vector<uint32_t>&red = bins[0], &green = bins[1];
    // Red: 0 and 255 in bin 0, 256 in 1, 1000 twice in 3, 32767, 32768 and 65535.
    EXPECT_EQ(
        (std::vector<uint32_t>{red[0], red[1], red[3], red[127], red[128], red[255], green[0], green[255]}),
        (std::vector<uint32_t>{2, 1, 2, 1, 1, 1, 1, 2}));
    EXPECT_EQ(std::accumulate(bins[2].begin(), bins[2].end(), 0u), 8u);
    Toolkit_Dispatch(tk.get());
}

}  // namespace
