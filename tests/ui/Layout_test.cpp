// The 3 x 3 layout: cell rectangles, minimum bands in their fixed order, and
// the placement of widgets from markup.
#include "ToolkitFixture.h"

namespace {

constexpr int32_t kWhole = 32768;

// A layout covering its whole parent, with the given splits and minimum bands.
Widget MakeLayout(const GeometryRecord& geometry) {
    Widget w;
    w.type = kWidgetLayout;
    w.width = kWhole;
    w.height = kWhole;
    auto record = std::make_unique<LayoutRecord>();
    record->geometry = geometry;
    w.data = std::move(record);
    return w;
}

CellRect Cell(int32_t pw, int32_t ph, uint32_t q, const Widget* w) {
    CellRect r;
    Layout_CellRect(pw, ph, q, w, &r);
    return r;
}

// Splits and minimum bands in their fixed order: a minimum moves a split
// when its band is too narrow, the top band never passes the bottom split,
// a left band wider than the centre empties it, a left split beyond the
// right one takes the right split along.
TEST(LayoutCells, SplitsAndMinimumBands) {
    struct Case {
        GeometryRecord g;  // left, top, right, bottom splits; then the four minimums in pixels
        int32_t pw, ph;
        uint32_t quadrant;
        CellRect expected;
    };
    const GeometryRecord half{8192, 0, 24576, kWhole};  // 25% and 75% across, the whole height
    const Case cases[] = {
        {half, 1000, 600, kQuadrantCenter, {8192, 0, 16384, kWhole}},  // 500 of 1000 pixels
        {half, 1000, 600, kQuadrantNorth, {8192, 0, 16384, 0}},
        {half, 1000, 600, kQuadrantSouth, {8192, kWhole, 16384, 0}},
        {half, 1000, 600, kQuadrantEast, {24576, 0, 8192, kWhole}},
        {{0, 0, 24576, kWhole, 0, 0, 200, 0}, 400, 300, kQuadrantEast, {16384, 0, 16384, kWhole}},
        {{0, 0, 24576, kWhole, 0, 0, 200, 0}, 1000, 300, kQuadrantEast, {24576, 0, 8192, kWhole}},
        {{0, 0, kWhole, 24576, 0, 50, 0, 100}, 800, 200, kQuadrantSouth, {0, 16384, kWhole, 16384}},
        {{0, 0, kWhole, 24576, 0, 50, 0, 100}, 800, 200, kQuadrantNorth, {0, 0, kWhole, 8192}},
        {{0, 0, kWhole, 24576, 0, 50, 0, 100}, 800, 200, kQuadrantCenter, {0, 8192, kWhole, 8192}},
        {{0, 0, kWhole, 16384, 0, 300, 0, 0}, 800, 400, kQuadrantNorth, {0, 0, kWhole, 16384}},
        {{0, 0, kWhole, 16384, 0, 300, 0, 0}, 800, 400, kQuadrantCenter, {0, 16384, kWhole, 0}},
        {{8192, 0, 24576, kWhole, 800, 0, 0, 0}, 1000, 500, kQuadrantCenter, {24576, 0, 0, kWhole}},
        {{8192, 0, 24576, kWhole, 800, 0, 0, 0}, 1000, 500, kQuadrantWest, {0, 0, 24576, kWhole}},
        {{8192, 0, 24576, kWhole, 800, 0, 0, 0}, 1000, 500, kQuadrantEast, {24576, 0, 8192, kWhole}},
        {{8192, 0, 24576, kWhole, 500, 0, 0, 0}, 1000, 500, kQuadrantWest, {0, 0, 16384, kWhole}},
        {{8192, 0, 24576, kWhole, 500, 0, 0, 0}, 1000, 500, kQuadrantCenter, {16384, 0, 8192, kWhole}},
        {{24576, 0, 8192, kWhole, 10, 0, 0, 0}, 1000, 500, kQuadrantEast, {24576, 0, 8192, kWhole}},
        {{24576, 0, 8192, kWhole, 10, 0, 0, 0}, 1000, 500, kQuadrantCenter, {24576, 0, 0, kWhole}},
        {{8192, 8192, 24576, 24576}, 800, 600, 9, {0, 0, 0, 0}},  // no such quadrant
    };
    for (const Case& c : cases) {
        const Widget w = MakeLayout(c.g);
        const CellRect r = Cell(c.pw, c.ph, c.quadrant, &w);
        EXPECT_EQ(std::vector<int32_t>({r.x, r.y, r.width, r.height}),
                  std::vector<int32_t>({c.expected.x, c.expected.y, c.expected.width, c.expected.height}))
            << "quadrant " << c.quadrant << " of " << c.pw << "x" << c.ph << " minimums "
            << c.g.minTopLeftPixelsX << "," << c.g.minTopLeftPixelsY << "," << c.g.minBottomRightPixelsX
            << "," << c.g.minBottomRightPixelsY;
    }
}

TEST(LayoutCells, NonLayoutsAndOddInput) {
    Widget label;
    label.type = kWidgetLabel;
    label.x = 1000;
    label.y = 2000;
    label.width = 3000;
    label.height = 4000;
    const CellRect whole = Cell(800, 600, kQuadrantCenter, &label);
    EXPECT_EQ(whole.x, 1000);
    EXPECT_EQ(whole.y, 2000);
    EXPECT_EQ(whole.width, 3000);
    EXPECT_EQ(whole.height, 4000);
    EXPECT_EQ(Cell(800, 600, kQuadrantNorthWest, &label).width, 0);
    const CellRect none = Cell(800, 600, kQuadrantCenter, nullptr);
    EXPECT_EQ(none.width, kWhole);
    EXPECT_EQ(none.height, kWhole);
    // A layout record on a widget of zero width behaves as one cell.
    Widget w = MakeLayout({8192, 8192, 24576, 24576});
    w.width = 0;
    EXPECT_EQ(Cell(800, 600, kQuadrantCenter, &w).height, kWhole);
}

TEST(LayoutCells, OffsetLayoutUsesItsOwnRectangle) {
    Widget w = MakeLayout({16384, 16384, 16384, 16384});
    w.x = 16384;
    w.width = 16384;
    const CellRect se = Cell(1000, 1000, kQuadrantSouthEast, &w);
    EXPECT_EQ(se.x, 16384 + 8192);
    EXPECT_EQ(se.width, 8192);
    EXPECT_EQ(se.y, 16384);
}

TEST(LayoutPlacement, FormWidgetsLandInTheirCells) {
    auto tk = ToolkitTest_Screen(1000, 500);
    const std::string markup = R"(<FORM ID="Frm_">
        <LAYOUT ID="Main" TopLeftX="25%" BottomRightX="75%" TopLeftY="0" BottomRightY="100%">
          <LAYOUT ID="East" Quadrant="East" MinBottomRightPixelsX="0"><BUTTON ID="BtKp"></BUTTON></LAYOUT>
          <LAYOUT ID="Cent" Quadrant="Center"><LABEL ID="Text"></LABEL></LAYOUT>
        </LAYOUT></FORM>)";
    ToolkitTest_Load(tk.get(), markup);
    Widget* east = Widget_FindById(tk->root.get(), Widget_PackId("East"));
    Widget* button = Widget_FindById(tk->root.get(), Widget_PackId("BtKp"));
    Widget* centre = Widget_FindById(tk->root.get(), Widget_PackId("Cent"));
    ASSERT_TRUE(east && button && centre);
    const PixelRect e = Widget_PixelRect(tk.get(), east);
    EXPECT_EQ(e.x, 750);
    EXPECT_EQ(e.width, 250);
    EXPECT_EQ(e.height, 500);
    const PixelRect b = Widget_PixelRect(tk.get(), button);
    EXPECT_EQ(b.x, 750);
    EXPECT_EQ(b.width, 250);
    const PixelRect c = Widget_PixelRect(tk.get(), centre);
    EXPECT_EQ(c.x, 250);
    EXPECT_EQ(c.width, 500);

    // The same form on a new screen size, placed again.
    Toolkit_SetScreen(tk.get(), 400, 300, 400, nullptr);
    Layout_Apply(tk.get(), tk->root.get());
    EXPECT_EQ(Widget_PixelRect(tk.get(), east).x, 300);
    EXPECT_EQ(Widget_PixelRect(tk.get(), button).width, 100);
}

TEST(LayoutPlacement, MinimumBandsUseTheMetricEntities) {
    auto tk = ToolkitTest_Screen(640, 480);  // button size 19
    const std::string markup = R"(<LAYOUT TopLeftX="0" BottomRightX="100%" TopLeftY="0" BottomRightY="100%")"
                               R"( MinBottomRightPixelsY="&system-buttonSizePixelsX2;">)"
                               R"(<LAYOUT ID="Bar_" Quadrant="South"></LAYOUT></LAYOUT>)";
    ToolkitTest_Load(tk.get(), markup);
    const PixelRect bar = Widget_PixelRect(tk.get(), Widget_FindById(tk->root.get(), Widget_PackId("Bar_")));
    // The split is found in units, so the band may come out a pixel taller.
    EXPECT_GE(bar.height, 39);
    EXPECT_LE(bar.height, 40);
    EXPECT_EQ(bar.y + bar.height, 480);
    EXPECT_EQ(bar.width, 640);
}

}  // namespace
