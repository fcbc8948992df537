// The part of a rotated picture without black corners: the largest
// axis-aligned rectangle of the rotated canvas (as RotateImage makes it) that
// holds no pixel the rotation leaves black.
#pragma once

#include <cstdint>

struct RotateRect {
    int32_t x0, y0, x1, y1;  // corners, both included; x1 < x0 when there is none
};

// For a width x height image turned by `degrees`. A quarter turn (or none)
// leaves no corner: the rectangle is the whole turned image.
RotateRect Rotate_InnerRect(int32_t width, int32_t height, double degrees);
