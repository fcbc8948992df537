// BITMAP: a picture from the resource archive, a .sqi icon (decoded at the
// size shown) or a PNG, placed by the four fill modes: AutoFit (whole picture,
// aspect kept), AutoFillOut (the area covered, aspect kept, the overhang cut),
// Stretch (the area exactly) and Native (one picture pixel per screen pixel).
#pragma once

#include "ui/Widget.h"
#include "ui/draw/Draw_Surface.h"

#include <cstdint>
#include <string>
#include <vector>

int Bitmap_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event);

// Draws an archive entry into `rect` with a fill mode; `cache` keeps the
// entry's bytes between calls. False when the entry is missing or unreadable.
bool Bitmap_DrawResource(Toolkit* toolkit, const std::string& name, std::vector<uint8_t>* cache, bool* loaded,
                         const DrawRect& rect, uint32_t fillMode);

// Where a picture of w x h lands in a rect for a fill mode (PNG placement;
// .sqi icons follow the decoder's own placement rule).
DrawRect Bitmap_Place(int32_t imageWidth, int32_t imageHeight, const DrawRect& rect, uint32_t fillMode);
