// Rectangle fills and outlines: each row clipped once, then walked as one span.
#include "ui/draw/Draw_Rect.h"

#include <algorithm>
#include <cstddef>

namespace {

uint32_t* RowAt(const Surface& s, int32_t x, int32_t y) {
    return s.pixels + static_cast<ptrdiff_t>(y) * s.pixelsPerRow + x;
}

}  // namespace

void Draw_FillRect(const Surface& surface, const DrawRect& rect, Colour565 colour) {
    const DrawRect r = Draw_Intersect(rect, surface.clip);
    if (Draw_IsEmpty(r)) return;
    const uint32_t pixel = Draw_PixelFrom565(colour);
    for (int32_t y = r.y; y < r.y + r.height; ++y) std::fill_n(RowAt(surface, r.x, y), r.width, pixel);
}

void Draw_BlendRect(const Surface& surface, const DrawRect& rect, Colour565 colour, uint32_t alpha) {
    if (alpha == 0) return;
    if (alpha >= 256) return Draw_FillRect(surface, rect, colour);
    const DrawRect r = Draw_Intersect(rect, surface.clip);
    if (Draw_IsEmpty(r)) return;
    const Fields565 c = Draw_Fields(colour);
    for (int32_t y = r.y; y < r.y + r.height; ++y) {
        uint32_t* p = RowAt(surface, r.x, y);
        for (int32_t i = 0; i < r.width; ++i) p[i] = Draw_BlendFields(p[i], c, alpha);
    }
}

void Draw_StrokeRect(const Surface& surface, const DrawRect& rect, int32_t thickness, Colour565 colour) {
    if (thickness <= 0 || rect.width <= 0 || rect.height <= 0) return;
    const int32_t t = std::min({thickness, (rect.width + 1) / 2, (rect.height + 1) / 2});
    Draw_FillRect(surface, {rect.x, rect.y, rect.width, t}, colour);
    Draw_FillRect(surface, {rect.x, rect.y + rect.height - t, rect.width, t}, colour);
    const int32_t middle = rect.height - 2 * t;
    if (middle <= 0) return;
    Draw_FillRect(surface, {rect.x, rect.y + t, t, middle}, colour);
    Draw_FillRect(surface, {rect.x + rect.width - t, rect.y + t, t, middle}, colour);
}

Colour565 Draw_GradientAt(Colour565 top, Colour565 bottom, int32_t row, int32_t rows) {
    if (rows <= 1 || row <= 0) return top;
    if (row >= rows - 1) return bottom;
    const Fields565 a = Draw_Fields(top);
    const Fields565 b = Draw_Fields(bottom);
    const int32_t n = rows - 1;
    auto mix = [&](int32_t from, int32_t to) { return (from * (n - row) + to * row + n / 2) / n; };
    return Draw_Pack565({mix(a.r, b.r), mix(a.g, b.g), mix(a.b, b.b)});
}

void Draw_FillVerticalGradient(const Surface& surface, const DrawRect& rect, Colour565 top,
                               Colour565 bottom) {
    const DrawRect r = Draw_Intersect(rect, surface.clip);
    if (Draw_IsEmpty(r)) return;
    for (int32_t y = r.y; y < r.y + r.height; ++y) {
        const uint32_t pixel = Draw_PixelFrom565(Draw_GradientAt(top, bottom, y - rect.y, rect.height));
        std::fill_n(RowAt(surface, r.x, y), r.width, pixel);
    }
}
