// Lines and circles by distance, like the rounded rectangles: coverage is 0.5
// minus the signed distance from the pixel centre to the edge. Each row is
// limited to the columns the shape can reach before any distance is taken.
#include "ui/draw/Draw_Shapes.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

float Coverage(float distance) {
    return std::clamp(0.5f - distance, 0.0f, 1.0f);
}

void Put(uint32_t* p, Fields565 colour, uint32_t pixel, float coverage) {
    const uint32_t alpha = static_cast<uint32_t>(coverage * 256.0f + 0.5f);
    if (alpha >= 256)
        *p = pixel;
    else if (alpha > 0)
        *p = Draw_BlendFields(*p, colour, alpha);
}

// Rows [y0, y1) of the clip that a shape spanning [top, bottom] may touch.
bool RowRange(const Surface& s, float top, float bottom, int32_t* y0, int32_t* y1) {
    if (!(top <= bottom)) return false;  // also refuses NaN
    const float lo = std::max(std::floor(top), static_cast<float>(s.clip.y));
    const float hi = std::min(std::ceil(bottom), static_cast<float>(s.clip.y + s.clip.height));
    if (lo >= hi) return false;
    *y0 = static_cast<int32_t>(lo);
    *y1 = static_cast<int32_t>(hi);
    return true;
}

// Columns [x0, x1) of the clip within [left, right].
bool ColumnRange(const Surface& s, float left, float right, int32_t* x0, int32_t* x1) {
    const float lo = std::max(std::floor(left), static_cast<float>(s.clip.x));
    const float hi = std::min(std::ceil(right), static_cast<float>(s.clip.x + s.clip.width));
    if (!(lo < hi)) return false;
    *x0 = static_cast<int32_t>(lo);
    *x1 = static_cast<int32_t>(hi);
    return true;
}

}  // namespace

void Draw_Line(const Surface& surface, float x0, float y0, float x1, float y1, float width,
               Colour565 colour) {
    if (!(width > 0.0f)) return;
    const float hw = width * 0.5f;
    int32_t rowStart, rowEnd;
    if (!RowRange(surface, std::min(y0, y1) - hw - 1.0f, std::max(y0, y1) + hw + 1.0f, &rowStart, &rowEnd))
        return;
    const float dx = x1 - x0;
    const float dy = y1 - y0;
    const float length2 = dx * dx + dy * dy;
    const uint32_t pixel = Draw_PixelFrom565(colour);
    const Fields565 fields = Draw_Fields(colour);
    const float reach = hw + 1.0f;

    // The segment's x where it crosses height y, held to the segment.
    auto xAt = [&](float y) {
        if (std::fabs(dy) < 1e-6f) return x0;
        return x0 + dx * std::clamp((y - y0) / dy, 0.0f, 1.0f);
    };
    for (int32_t y = rowStart; y < rowEnd; ++y) {
        const float py = static_cast<float>(y) + 0.5f;
        float left = std::min(x0, x1), right = std::max(x0, x1);
        if (std::fabs(dy) >= 1e-6f) {
            const float a = xAt(py - reach);
            const float b = xAt(py + reach);
            left = std::min(a, b);
            right = std::max(a, b);
        }
        int32_t c0, c1;
        if (!ColumnRange(surface, left - reach, right + reach, &c0, &c1)) continue;
        uint32_t* row = surface.pixels + static_cast<ptrdiff_t>(y) * surface.pixelsPerRow;
        for (int32_t x = c0; x < c1; ++x) {
            const float px = static_cast<float>(x) + 0.5f;
            float t = length2 > 0.0f ? ((px - x0) * dx + (py - y0) * dy) / length2 : 0.0f;
            t = std::clamp(t, 0.0f, 1.0f);
            const float ex = px - (x0 + t * dx);
            const float ey = py - (y0 + t * dy);
            Put(row + x, fields, pixel, Coverage(std::sqrt(ex * ex + ey * ey) - hw));
        }
    }
}

void Draw_FillCircle(const Surface& surface, float cx, float cy, float radius, Colour565 colour) {
    if (!(radius > 0.0f)) return;
    int32_t rowStart, rowEnd;
    if (!RowRange(surface, cy - radius - 1.0f, cy + radius + 1.0f, &rowStart, &rowEnd)) return;
    const uint32_t pixel = Draw_PixelFrom565(colour);
    const Fields565 fields = Draw_Fields(colour);
    const float outer2 = (radius + 0.5f) * (radius + 0.5f);
    const float inner = radius - 0.5f;
    for (int32_t y = rowStart; y < rowEnd; ++y) {
        const float dy = static_cast<float>(y) + 0.5f - cy;
        const float reach2 = outer2 - dy * dy;
        if (reach2 <= 0.0f) continue;
        const float reach = std::sqrt(reach2);
        // Centres within `full` of cx are wholly inside: no distance needed.
        const float full2 = inner > 0.0f ? inner * inner - dy * dy : -1.0f;
        const float full = full2 > 0.0f ? std::sqrt(full2) : -1.0f;
        int32_t c0, c1;
        if (!ColumnRange(surface, cx - reach - 0.5f, cx + reach + 0.5f, &c0, &c1)) continue;
        uint32_t* row = surface.pixels + static_cast<ptrdiff_t>(y) * surface.pixelsPerRow;
        for (int32_t x = c0; x < c1; ++x) {
            const float ddx = static_cast<float>(x) + 0.5f - cx;
            if (std::fabs(ddx) <= full) {
                row[x] = pixel;
                continue;
            }
            Put(row + x, fields, pixel, Coverage(std::sqrt(ddx * ddx + dy * dy) - radius));
        }
    }
}

void Draw_StrokeCircle(const Surface& surface, float cx, float cy, float radius, float width,
                       Colour565 colour) {
    if (!(width > 0.0f) || !(radius > 0.0f)) return;
    const float hw = width * 0.5f;
    const float outer = radius + hw;
    int32_t rowStart, rowEnd;
    if (!RowRange(surface, cy - outer - 1.0f, cy + outer + 1.0f, &rowStart, &rowEnd)) return;
    const uint32_t pixel = Draw_PixelFrom565(colour);
    const Fields565 fields = Draw_Fields(colour);
    const float hole = radius - hw - 0.5f;  // centres closer than this are untouched
    for (int32_t y = rowStart; y < rowEnd; ++y) {
        const float dy = static_cast<float>(y) + 0.5f - cy;
        const float reach2 = (outer + 0.5f) * (outer + 0.5f) - dy * dy;
        if (reach2 <= 0.0f) continue;
        const float reach = std::sqrt(reach2);
        const float hole2 = hole > 0.0f ? hole * hole - dy * dy : -1.0f;
        const float holeReach = hole2 > 0.0f ? std::sqrt(hole2) : -1.0f;
        int32_t c0, c1;
        if (!ColumnRange(surface, cx - reach - 0.5f, cx + reach + 0.5f, &c0, &c1)) continue;
        uint32_t* row = surface.pixels + static_cast<ptrdiff_t>(y) * surface.pixelsPerRow;
        for (int32_t x = c0; x < c1; ++x) {
            const float ddx = static_cast<float>(x) + 0.5f - cx;
            if (std::fabs(ddx) < holeReach) continue;
            const float d = std::fabs(std::sqrt(ddx * ddx + dy * dy) - radius) - hw;
            Put(row + x, fields, pixel, Coverage(d));
        }
    }
}
