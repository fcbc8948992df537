// Layout: a LAYOUT divides its rectangle into a 3 x 3 grid whose split
// positions are fractions of the layout and whose outer bands can be given
// minimum sizes in pixels; every widget placed in it occupies one cell.
#pragma once

#include <cstdint>

struct Toolkit;
struct Widget;

struct CellRect {
    int32_t x = 0;
    int32_t y = 0;
    int32_t width = 0;
    int32_t height = 0;
};

// The rectangle of cell `quadrant` of `layout`, in the units of the layout's
// own rectangle (normalised units of its parent, whose size in pixels is
// parentPixelsW x parentPixelsH). A widget that is not a layout gives one cell
// covering all of it; no widget at all gives (0, 0, 32768, 32768).
void Layout_CellRect(int32_t parentPixelsW, int32_t parentPixelsH, uint32_t quadrant, const Widget* layout,
                     CellRect* out);

// Sets the rectangle of a widget from its parent: a layout takes the cell its
// Quadrant names, a control the centre cell, a form, image view or histogram
// its own rectangle inside the centre cell.
void Layout_PlaceWidget(const Toolkit* toolkit, Widget* widget);

// Places every child of every container under `widget` again, outside in:
// what a form needs after the screen changed size.
void Layout_Apply(const Toolkit* toolkit, Widget* widget);
