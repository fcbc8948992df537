// Axis-aligned rectangles in whole pixels: flat fills, translucent fills,
// outlines and the vertical gradient that gives buttons their gloss. All
// clipped to the surface's clip rectangle.
#pragma once

#include "ui/draw/Draw_Colour.h"
#include "ui/draw/Draw_Surface.h"

void Draw_FillRect(const Surface& surface, const DrawRect& rect, Colour565 colour);

// The colour over what is there with `alpha` in 0..256 (see Draw_Blend).
void Draw_BlendRect(const Surface& surface, const DrawRect& rect, Colour565 colour, uint32_t alpha);

// An outline `thickness` pixels wide, drawn inside the rectangle.
void Draw_StrokeRect(const Surface& surface, const DrawRect& rect, int32_t thickness, Colour565 colour);

// The row colour of a vertical gradient: `top` in the first row, `bottom` in
// the last, each field interpolated linearly and rounded to nearest.
Colour565 Draw_GradientAt(Colour565 top, Colour565 bottom, int32_t row, int32_t rows);

void Draw_FillVerticalGradient(const Surface& surface, const DrawRect& rect, Colour565 top, Colour565 bottom);
