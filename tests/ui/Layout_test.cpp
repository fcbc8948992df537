// The 3 x 3 layout: cell rectangles, minimum bands in their fixed order, and
// the placement of widgets from markup.
#include "ui/Layout.h"
#include "ui/Entities.h"
#include "ui/Toolkit.h"
#include "ui/Toolkit_Create.h"
#include "ui/WidgetKinds.h"
#include "ui/markup/Markup_Form.h"

#include <gtest/gtest.h>

namespace {

constexpr int32_t kWhole = 32768;

// A layout covering its whole parent, with the given splits.
Widget MakeLayout(int32_t a, int32_t b, int32_t c, int32_t d) {
    Widget w;
    w.type = kWidgetLayout;
    w.width = kWhole;
    w.height = kWhole;
    auto record = std::make_unique<LayoutRecord>();
    record->geometry.topLeftX = a;
    record->geometry.bottomRightX = b;
    record->geometry.topLeftY = c;
    record->geometry.bottomRightY = d;
    w.data = std::move(record);
    return w;
}

GeometryRecord& Geometry(Widget& w) {
    return Widget_Record<LayoutRecord>(&w)->geometry;
}

CellRect Cell(int32_t pw, int32_t ph, uint32_t q, const Widget* w) {
    CellRect r;
    Layout_CellRect(pw, ph, q, w, &r);
    return r;
}

int32_t Pixels(int32_t units, int32_t parent) {
    return int32_t((int64_t(units) * parent) >> 15);
}

TEST(LayoutCells, CentreColumnIsHalfOfAThousandPixels) {
    Widget w = MakeLayout(8192, 24576, 0, kWhole);  // 25%, 75%, 0, 100%
    const CellRect centre = Cell(1000, 600, kQuadrantCenter, &w);
    EXPECT_EQ(Pixels(centre.width, 1000), 500);
    EXPECT_EQ(centre.x, 8192);
    EXPECT_EQ(centre.y, 0);
    EXPECT_EQ(centre.height, kWhole);
    // The top band is empty; the bottom band too.
    EXPECT_EQ(Cell(1000, 600, kQuadrantNorth, &w).height, 0);
    EXPECT_EQ(Cell(1000, 600, kQuadrantSouth, &w).height, 0);
    const CellRect east = Cell(1000, 600, kQuadrantEast, &w);
    EXPECT_EQ(east.x, 24576);
    EXPECT_EQ(east.width, 8192);
}

TEST(LayoutCells, RightMinimumMovesTheSplitToHalf) {
    Widget w = MakeLayout(0, 24576, 0, kWhole);
    Geometry(w).minBottomRightPixelsX = 200;
    const CellRect east = Cell(400, 300, kQuadrantEast, &w);
    EXPECT_EQ(east.x, 16384);
    EXPECT_EQ(Pixels(east.width, 400), 200);
    // Wide enough already: nothing moves.
    EXPECT_EQ(Cell(1000, 300, kQuadrantEast, &w).x, 24576);
}

TEST(LayoutCells, BottomAndTopMinimums) {
    Widget w = MakeLayout(0, kWhole, 0, 24576);
    Geometry(w).minBottomRightPixelsY = 100;
    Geometry(w).minTopLeftPixelsY = 50;
    const CellRect south = Cell(800, 200, kQuadrantSouth, &w);
    EXPECT_EQ(south.y, 16384);  // 100 of 200 pixels
    const CellRect north = Cell(800, 200, kQuadrantNorth, &w);
    EXPECT_EQ(north.y, 0);
    EXPECT_EQ(north.height, 8192);  // 50 of 200 pixels
    const CellRect centre = Cell(800, 200, kQuadrantCenter, &w);
    EXPECT_EQ(centre.y, 8192);
    EXPECT_EQ(centre.height, 8192);
}

TEST(LayoutCells, TopBandNeverPassesTheBottomSplit) {
    Widget w = MakeLayout(0, kWhole, 0, 16384);
    Geometry(w).minTopLeftPixelsY = 300;  // more than the whole top and centre
    const CellRect north = Cell(800, 400, kQuadrantNorth, &w);
    EXPECT_EQ(north.height, 16384);
    EXPECT_EQ(Cell(800, 400, kQuadrantCenter, &w).height, 0);
}

TEST(LayoutCells, LeftMinimumLargerThanTheCentreEmptiesIt) {
    Widget w = MakeLayout(8192, 24576, 0, kWhole);
    Geometry(w).minTopLeftPixelsX = 800;  // of 1000: beyond the right split at 750
    const CellRect centre = Cell(1000, 500, kQuadrantCenter, &w);
    EXPECT_EQ(centre.width, 0);
    EXPECT_EQ(centre.x, 24576);
    EXPECT_EQ(Cell(1000, 500, kQuadrantWest, &w).width, 24576);
    EXPECT_EQ(Cell(1000, 500, kQuadrantEast, &w).x, 24576);
}

TEST(LayoutCells, LeftMinimumGrowsTheLeftBandWhenItFits) {
    Widget w = MakeLayout(8192, 24576, 0, kWhole);
    Geometry(w).minTopLeftPixelsX = 500;
    const CellRect west = Cell(1000, 500, kQuadrantWest, &w);
    EXPECT_EQ(west.width, 16384);
    const CellRect centre = Cell(1000, 500, kQuadrantCenter, &w);
    EXPECT_EQ(centre.x, 16384);
    EXPECT_EQ(centre.width, 8192);
}

TEST(LayoutCells, LeftSplitBeyondTheRightOne) {
    // a > b and the left band already wide enough: the right split follows a.
    Widget w = MakeLayout(24576, 8192, 0, kWhole);
    Geometry(w).minTopLeftPixelsX = 10;
    EXPECT_EQ(Cell(1000, 500, kQuadrantEast, &w).x, 24576);
    EXPECT_EQ(Cell(1000, 500, kQuadrantCenter, &w).width, 0);
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
    Widget w = MakeLayout(8192, 24576, 8192, 24576);
    const CellRect beyond = Cell(800, 600, 9, &w);
    EXPECT_EQ(beyond.x, 0);
    EXPECT_EQ(beyond.width, 0);
    EXPECT_EQ(beyond.height, 0);
    // A layout record on a widget of zero width behaves as one cell.
    w.width = 0;
    EXPECT_EQ(Cell(800, 600, kQuadrantCenter, &w).height, kWhole);
}

TEST(LayoutCells, OffsetLayoutUsesItsOwnRectangle) {
    Widget w = MakeLayout(16384, 16384, 16384, 16384);
    w.x = 16384;
    w.width = 16384;
    const CellRect se = Cell(1000, 1000, kQuadrantSouthEast, &w);
    EXPECT_EQ(se.x, 16384 + 8192);
    EXPECT_EQ(se.width, 8192);
    EXPECT_EQ(se.y, 16384);
}

TEST(LayoutPlacement, FormWidgetsLandInTheirCells) {
    auto tk = Toolkit_CreateBare();
    Toolkit_SetScreen(tk.get(), 1000, 500, 1000, nullptr);
    Toolkit_SetMetricsFromScreen(tk.get());
    const std::string markup = R"(<FORM ID="Frm_">
        <LAYOUT ID="Main" TopLeftX="25%" BottomRightX="75%" TopLeftY="0" BottomRightY="100%">
          <LAYOUT ID="East" Quadrant="East" MinBottomRightPixelsX="0"><BUTTON ID="BtKp"></BUTTON></LAYOUT>
          <LAYOUT ID="Cent" Quadrant="Center"><LABEL ID="Text"></LABEL></LAYOUT>
        </LAYOUT></FORM>)";
    Form_LoadText(tk.get(), "t.xml", reinterpret_cast<const uint8_t*>(markup.data()), markup.size(), nullptr);
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
    auto tk = Toolkit_CreateBare();
    Toolkit_SetScreen(tk.get(), 640, 480, 640, nullptr);
    Toolkit_SetMetricsFromScreen(tk.get());  // button size 19
    const std::string markup = R"(<LAYOUT TopLeftX="0" BottomRightX="100%" TopLeftY="0" BottomRightY="100%")"
                               R"( MinBottomRightPixelsY="&system-buttonSizePixelsX2;">)"
                               R"(<LAYOUT ID="Bar_" Quadrant="South"></LAYOUT></LAYOUT>)";
    Form_LoadText(tk.get(), "t.xml", reinterpret_cast<const uint8_t*>(markup.data()), markup.size(), nullptr);
    const PixelRect bar = Widget_PixelRect(tk.get(), Widget_FindById(tk->root.get(), Widget_PackId("Bar_")));
    // The split is found in units, so the band may come out a pixel taller.
    EXPECT_GE(bar.height, 39);
    EXPECT_LE(bar.height, 40);
    EXPECT_EQ(bar.y + bar.height, 480);
    EXPECT_EQ(bar.width, 640);
}

}  // namespace
