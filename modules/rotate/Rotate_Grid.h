// The levelling grid over Rotate's preview: thin lines about every eighth of
// the view, through the picture's centre, for lining up a horizon or an edge.
// It marks up a display copy only, never a result.
#pragma once

#include <cstdint>

struct ImageBuffer;

struct RotateGridSpacing {
    int32_t step;   // image pixels from one line to the next
    int32_t width;  // image pixels a line covers
};

// For a view of this size (screen pixels; 0 when unknown) showing the image
// at `zoom` percent: lines about an eighth of the view's shorter side apart
// on screen (32 to 160 pixels), each as wide as the view needs to show it at
// all, sampling one image pixel in every 100 / zoom.
RotateGridSpacing Rotate_GridSpacing(int32_t zoom, int32_t viewWidth, int32_t viewHeight);

// Draws the grid into `shown`: a pixel on a line is taken half way to white
// when it is darker than mid-grey, and halved otherwise, so that the lines
// read over a black sky and over a bright field alike.
void Rotate_DrawGrid(ImageBuffer* shown, const RotateGridSpacing& spacing);
