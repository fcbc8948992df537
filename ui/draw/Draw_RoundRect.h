// Anti-aliased rounded rectangles for buttons, fields, slider tracks and
// knobs. The rectangle is in whole pixels, so straight edges stay crisp; only
// the corners are anti-aliased. The radius is held to half the shorter side,
// so a square with the full radius is a disc.
#pragma once

#include "ui/draw/Draw_Colour.h"
#include "ui/draw/Draw_Surface.h"

void Draw_FillRoundRect(const Surface& surface, const DrawRect& rect, float radius, Colour565 colour);

// Filled with a vertical gradient, `top` in the first row and `bottom` in the
// last (Draw_GradientAt): the gloss of a button.
void Draw_FillRoundRectGradient(const Surface& surface, const DrawRect& rect, float radius, Colour565 top,
                                Colour565 bottom);

// An outline `thickness` pixels wide inside the rectangle; the inner edge is
// rounded with the radius less the thickness.
void Draw_StrokeRoundRect(const Surface& surface, const DrawRect& rect, float radius, float thickness,
                          Colour565 colour);
