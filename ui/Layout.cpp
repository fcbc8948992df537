// The layout arithmetic of the 3 x 3 grid and the placement of widgets in it.
// The steps run in a fixed order on purpose: the right and bottom bands take
// their minimum first, then the top band, and the left band last, growing to
// its minimum but never past the right split.
#include "ui/Layout.h"

#include "ui/Toolkit.h"
#include "ui/WidgetKinds.h"

#include <algorithm>

namespace {

constexpr int64_t kWhole = kUnitsWhole;

// u·L: a fraction in normalised units of a length.
int64_t Part(int64_t fraction, int64_t length) {
    return (fraction * length) >> kUnitsShift;
}

bool IsContainer(uint32_t type) {
    return type == kWidgetDrawingArea || type == kWidgetLayout || type == kWidgetForm;
}

const GeometryRecord* OwnGeometry(const Widget* widget) {
    if (const auto* form = Widget_Record<FormRecord>(widget)) return &form->geometry;
    if (const auto* view = Widget_Record<ImageViewRecord>(widget)) return &view->geometry;
    if (const auto* histogram = Widget_Record<HistogramRecord>(widget)) return &histogram->geometry;
    return nullptr;
}

}  // namespace

void Layout_CellRect(int32_t parentPixelsW, int32_t parentPixelsH, uint32_t quadrant, const Widget* layout,
                     CellRect* out) {
    if (!out) return;
    if (!layout) {
        *out = {0, 0, static_cast<int32_t>(kWhole), static_cast<int32_t>(kWhole)};
        return;
    }
    const int64_t X = layout->x;
    const int64_t Y = layout->y;
    const int64_t W = layout->width;
    const int64_t H = layout->height;
    const int64_t PW = parentPixelsW;
    const int64_t PH = parentPixelsH;
    const LayoutRecord* record =
        layout->type == kWidgetLayout ? Widget_Record<LayoutRecord>(layout) : nullptr;

    int64_t a = 0, b = kWhole, r1 = 0, r2 = kWhole;
    if (record && W != 0 && H != 0) {
        const GeometryRecord& g = record->geometry;
        a = g.topLeftX;
        b = g.bottomRightX;
        int64_t c = g.topLeftY;
        int64_t d = g.bottomRightY;
        // A parent without pixels has no bands to keep at a minimum.
        if (PW > 0) {
            const int64_t right = ((X + W) * PW) >> kUnitsShift;
            const int64_t split = ((Part(b, W) + X) * PW) >> kUnitsShift;
            const int64_t min = g.minBottomRightPixelsX;
            if (right - split < min) b = (((((right - min) * kWhole) / PW) - X) * kWhole) / W;
        }
        if (PH > 0) {
            const int64_t bottom = ((Y + H) * PH) >> kUnitsShift;
            const int64_t split = ((Part(d, H) + Y) * PH) >> kUnitsShift;
            const int64_t min = g.minBottomRightPixelsY;
            if (bottom - split < min) d = (((((bottom - min) * kWhole) / PH) - Y) * kWhole) / H;
        }
        r2 = std::max(c, d);
        if (PH > 0 && ((Part(c, H) * PH) >> kUnitsShift) < g.minTopLeftPixelsY)
            c = (((int64_t{g.minTopLeftPixelsY} * kWhole) / PH) * kWhole) / H;
        r1 = std::min(c, r2);
        const int64_t leftPixels = (Part(a, W) * PW) >> kUnitsShift;
        const int64_t m = g.minTopLeftPixelsX;
        if (a <= b) {
            if (m > leftPixels) a = b;
        } else if (m <= leftPixels) {
            b = a;
        }
        if (m > leftPixels && PW > 0) {
            const int64_t a2 = (((m * kWhole) / PW) * kWhole) / W;
            b = a;
            if (a2 <= a) a = a2;
        }
    }
    if (quadrant >= 9) {
        *out = {};
        return;
    }
    const int64_t columns[4] = {X, X + Part(a, W), X + Part(b, W), X + W};
    const int64_t rows[4] = {Y, Y + Part(r1, H), Y + Part(r2, H), Y + H};
    const uint32_t column = quadrant % 3;
    const uint32_t row = quadrant / 3;
    const int64_t left = std::clamp<int64_t>(columns[column], 0, kWhole);
    const int64_t right = std::min<int64_t>(columns[column + 1], kWhole);
    const int64_t top = std::clamp<int64_t>(rows[row], 0, kWhole);
    const int64_t bottom = std::clamp<int64_t>(rows[row + 1], 0, kWhole);
    out->x = static_cast<int32_t>(left);
    out->y = static_cast<int32_t>(top);
    out->width = static_cast<int32_t>(std::max<int64_t>(right - left, 0));
    out->height = static_cast<int32_t>(std::max<int64_t>(bottom - top, 0));
}

void Layout_PlaceWidget(const Toolkit* toolkit, Widget* widget) {
    if (!toolkit || !widget || !widget->parent) return;
    const Widget* parent = widget->parent;
    // The cell comes out in the units of the parent's own rectangle, that is
    // of the grandparent; it is brought into the parent's units below.
    PixelRect outer;
    if (parent->parent) {
        outer = Widget_PixelRect(toolkit, parent->parent);
    } else {
        outer.width = static_cast<int32_t>(toolkit->screenWidth);
        outer.height = static_cast<int32_t>(toolkit->screenHeight);
    }
    uint32_t quadrant = kQuadrantCenter;
    if (const auto* layout = Widget_Record<LayoutRecord>(widget)) quadrant = layout->quadrant;
    CellRect cell;
    Layout_CellRect(outer.width, outer.height, quadrant, parent, &cell);
    int64_t x = 0, y = 0, w = 0, h = 0;
    if (parent->width > 0 && parent->height > 0) {
        x = ((int64_t{cell.x} - parent->x) * kWhole) / parent->width;
        y = ((int64_t{cell.y} - parent->y) * kWhole) / parent->height;
        w = (int64_t{cell.width} * kWhole) / parent->width;
        h = (int64_t{cell.height} * kWhole) / parent->height;
    }
    if (const GeometryRecord* g = OwnGeometry(widget)) {
        const int64_t left = x + Part(g->topLeftX, w);
        const int64_t top = y + Part(g->topLeftY, h);
        const int64_t right = x + Part(g->bottomRightX, w);
        const int64_t bottom = y + Part(g->bottomRightY, h);
        x = left;
        y = top;
        w = std::max<int64_t>(right - left, 0);
        h = std::max<int64_t>(bottom - top, 0);
    }
    widget->x = static_cast<uint32_t>(std::clamp<int64_t>(x, 0, kWhole));
    widget->y = static_cast<uint32_t>(std::clamp<int64_t>(y, 0, kWhole));
    widget->width = static_cast<uint32_t>(std::clamp<int64_t>(w, 0, kWhole - widget->x));
    widget->height = static_cast<uint32_t>(std::clamp<int64_t>(h, 0, kWhole - widget->y));
}

void Layout_Apply(const Toolkit* toolkit, Widget* widget) {
    if (!widget) return;
    std::vector<Widget*> pending{widget};
    while (!pending.empty()) {
        Widget* current = pending.back();
        pending.pop_back();
        // Children of controls (a level setter's labels) are placed by their owner.
        if (!IsContainer(current->type)) continue;
        for (auto& child : current->children) {
            Layout_PlaceWidget(toolkit, child.get());
            pending.push_back(child.get());
        }
    }
}
