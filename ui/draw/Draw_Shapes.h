// Anti-aliased lines and circles at fractional positions, for curves,
// histograms, markers and knobs. Pixel (x, y) covers [x, x + 1) x [y, y + 1),
// so a one-pixel line through pixel centres (y = 10.5) is crisp.
#pragma once

#include "ui/draw/Draw_Colour.h"
#include "ui/draw/Draw_Surface.h"

// A line `width` pixels wide with round ends reaching width / 2 past each end point.
void Draw_Line(const Surface& surface, float x0, float y0, float x1, float y1, float width, Colour565 colour);

void Draw_FillCircle(const Surface& surface, float cx, float cy, float radius, Colour565 colour);

// A ring `width` pixels wide centred on the circle of `radius`.
void Draw_StrokeCircle(const Surface& surface, float cx, float cy, float radius, float width,
                       Colour565 colour);
