// The 3 x 3 layout: cell rectangles, minimum bands in their fixed order, and
// the placement of widgets from markup. (A band kept at a metric entity's
// size is the test form's button row, checked in Archive_test and in
// the toolkit's golden pictures.)
#include "ToolkitFixture.h"

namespace {

constexpr int32_t kWhole = 32768, kHalf = 16384;

// A layout covering its parent's height, with the given splits and minimum bands.
Widget MakeLayout(const GeometryRecord& geometry, int32_t x = 0, int32_t width = kWhole) {
    Widget w;
    w.type = kWidgetLayout;
    w.x = x;
    w.width = width;
    w.height = kWhole;
    auto record = std::make_unique<LayoutRecord>();
    record->geometry = geometry;
    w.data = std::move(record);
    return w;
}

// The cell's x, y, width and height in units.
std::vector<int32_t> Cell(int32_t pw, int32_t ph, uint32_t q, const Widget* w) {
    CellRect r;
    Layout_CellRect(pw, ph, q, w, &r);
    return {r.x, r.y, r.width, r.height};
}

// Splits and minimum bands in their fixed order: a minimum moves a split
// when its band is too narrow, the top band never passes the bottom split,
// a left band wider than the centre empties it, a left split beyond the
// right one takes the right split along. A layout placed in part of its
// parent splits its own rectangle.
TEST(LayoutCells, SplitsMinimumBandsNonLayoutsOddInputAndFormWidgetsInTheirCells) {
    struct Case {
        GeometryRecord g;  // left, top, right, bottom splits; then the four minimums in pixels
        int32_t pw, ph;
        uint32_t quadrant;
        CellRect expected;
        int32_t x = 0, width = kWhole;  // the layout's place across its parent
    };
    const GeometryRecord half{8192, 0, 24576, kWhole};  // 25% and 75% across, the whole height
    const GeometryRecord quarters{kHalf, kHalf, kHalf, kHalf};
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
        {quarters, 1000, 1000, kQuadrantSouthEast, {24576, kHalf, 8192, kHalf}, kHalf, kHalf},  // right half
    };
    for (const Case& c : cases) {
        const Widget w = MakeLayout(c.g, c.x, c.width);
        EXPECT_EQ(Cell(c.pw, c.ph, c.quadrant, &w),
                  std::vector<int32_t>({c.expected.x, c.expected.y, c.expected.width, c.expected.height}))
            << "row " << &c - cases;
    }
    // Widgets that are not layouts, and odd input.
    Widget label;
    label.type = kWidgetLabel;
    label.x = 1000;
    label.y = 2000;
    label.width = 3000;
    label.height = 4000;
    EXPECT_EQ(Cell(800, 600, kQuadrantCenter, &label), (std::vector<int32_t>{1000, 2000, 3000, 4000}));
    EXPECT_EQ(Cell(800, 600, kQuadrantNorthWest, &label)[2], 0);
    const std::vector<int32_t> none = Cell(800, 600, kQuadrantCenter, nullptr);
    EXPECT_EQ(std::pair(none[2], none[3]), std::pair(kWhole, kWhole));
    // A layout record on a widget of zero width behaves as one cell.
    const Widget w = MakeLayout({8192, 8192, 24576, 24576}, 0, 0);
    EXPECT_EQ(Cell(800, 600, kQuadrantCenter, &w)[3], kWhole);
    // Form widgets land in their cells.
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
    for (auto [w, x, width] : {std::tuple{east, 750, 250}, {button, 750, 250}, {centre, 250, 500}}) {
        const PixelRect r = Widget_PixelRect(tk.get(), w);
        EXPECT_EQ(std::pair(r.x, r.width), std::pair(x, width)) << w->id;
    }
    EXPECT_EQ(Widget_PixelRect(tk.get(), east).height, 500);

    // The same form on a new screen size, placed again.
    Toolkit_SetScreen(tk.get(), 400, 300, 400, nullptr);
    Layout_Apply(tk.get(), tk->root.get());
    EXPECT_EQ(Widget_PixelRect(tk.get(), east).x, 300);
    EXPECT_EQ(Widget_PixelRect(tk.get(), button).width, 100);
}

}  // namespace
