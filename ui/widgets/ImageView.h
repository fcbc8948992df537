// PELLUCIDAVIEW, the image view: shows an ImageBuffer through a lookup table
// of 65536 entries that maps 16-bit image values to 8-bit screen values (the
// screen stretch; without one the mapping is linear, value >> 8). The zoom is
// in percent; with the fit flag set the zoom is the largest whole percentage at
// which the whole image fits the view, and the image is centred. Dragging pans
// the image; in region mode a drag draws a rectangle that is handed, in image
// pixels, to the region callback on release (modules pick areas this way).
#pragma once

#include "ui/WidgetKinds.h"

inline constexpr uint32_t kImageViewLutSize = 65536;

int ImageView_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event);

// Shows `image` (the caller keeps it alive) through `lut` (null for linear)
// fitted to the view. The view keeps what it drew until the image, its tables,
// the zoom or the position change: after changing an image's samples in place,
// set it again.
void ImageView_SetImage(Toolkit* toolkit, Widget* view, const ImageBuffer* image, const uint8_t* lut);
// Replaces the lookup table without touching zoom or position; with
// `perChannel`, `lut` holds three tables of 65536 entries (red, green, blue).
void ImageView_SetTables(Toolkit* toolkit, Widget* view, const uint8_t* lut, bool perChannel);
// A fixed zoom in percent (clears fit) or fitting again.
void ImageView_SetZoom(Toolkit* toolkit, Widget* view, int32_t zoom);
void ImageView_Fit(Toolkit* toolkit, Widget* view);
// The zoom steps of the view's zoom buttons: the next level up or down from
// the current zoom (5, 10, 25, 33, 50, 66, 100, 150, 200, 300, 400, 800,
// 1600, 3200); the view keeps the image point at its centre.
int32_t ImageView_ZoomInLevel(int32_t zoom);
int32_t ImageView_ZoomOutLevel(int32_t zoom);
void ImageView_ZoomIn(Toolkit* toolkit, Widget* view);
void ImageView_ZoomOut(Toolkit* toolkit, Widget* view);
// The zoom as shown: for a fitted view, the fitted zoom for the view's size.
int32_t ImageView_Zoom(const Toolkit* toolkit, Widget* view);
// The zoom at which the view would fit an image of this size.
int32_t ImageView_FitZoomFor(const Toolkit* toolkit, Widget* view, int32_t width, int32_t height);

void ImageView_SetRegionCallback(Widget* view, ImageRegionCallback callback, void* user);

// The image pixel under screen pixel (x, y); false outside the image.
bool ImageView_ImagePoint(const Toolkit* toolkit, Widget* view, int32_t x, int32_t y, int32_t* imageX,
                          int32_t* imageY);
