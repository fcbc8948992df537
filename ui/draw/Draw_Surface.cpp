// Surface construction and rectangle arithmetic for the painter.
#include "ui/draw/Draw_Surface.h"

#include <algorithm>

Surface Draw_MakeSurface(uint32_t* pixels, int32_t pixelsPerRow, int32_t width, int32_t height) {
    Surface s;
    s.pixels = pixels;
    s.pixelsPerRow = pixelsPerRow;
    s.width = pixels ? std::max(width, 0) : 0;
    s.height = pixels ? std::max(height, 0) : 0;
    s.clip = {0, 0, s.width, s.height};
    return s;
}

DrawRect Draw_Intersect(const DrawRect& a, const DrawRect& b) {
    // 64-bit edges: a rectangle near INT32_MAX must not wrap around.
    const int64_t x0 = std::max<int64_t>(a.x, b.x);
    const int64_t y0 = std::max<int64_t>(a.y, b.y);
    const int64_t x1 = std::min<int64_t>(int64_t{a.x} + a.width, int64_t{b.x} + b.width);
    const int64_t y1 = std::min<int64_t>(int64_t{a.y} + a.height, int64_t{b.y} + b.height);
    if (x1 <= x0 || y1 <= y0) return {static_cast<int32_t>(x0), static_cast<int32_t>(y0), 0, 0};
    return {static_cast<int32_t>(x0), static_cast<int32_t>(y0), static_cast<int32_t>(x1 - x0),
            static_cast<int32_t>(y1 - y0)};
}
