// Rounded rectangles by distance: each pixel's coverage is 0.5 minus the
// signed distance from its centre to the shape's edge, held to 0..1. That is
// exact for straight edges on the pixel grid (the centres lie half a pixel in
// or out) and a close estimate of the area under a corner arc. Rows away from
// the corners are flat spans; only the corner columns of the corner rows pay
// for a square root.
#include "ui/draw/Draw_RoundRect.h"

#include "ui/draw/Draw_Rect.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

float Coverage(float distance) {
    return std::clamp(0.5f - distance, 0.0f, 1.0f);
}

uint32_t AlphaOf(float coverage) {
    return static_cast<uint32_t>(coverage * 256.0f + 0.5f);
}

void Put(uint32_t* p, Fields565 colour, uint32_t pixel, float coverage) {
    const uint32_t alpha = AlphaOf(coverage);
    if (alpha >= 256)
        *p = pixel;
    else if (alpha > 0)
        *p = Draw_BlendFields(*p, colour, alpha);
}

// Signed distance from (px, py) to a rounded box; negative inside.
struct RoundBox {
    float cx, cy, halfW, halfH, radius;
    float Distance(float px, float py) const {
        const float qx = std::fabs(px - cx) - (halfW - radius);
        const float qy = std::fabs(py - cy) - (halfH - radius);
        const float ox = std::max(qx, 0.0f);
        const float oy = std::max(qy, 0.0f);
        return std::sqrt(ox * ox + oy * oy) + std::min(std::max(qx, qy), 0.0f) - radius;
    }
};

RoundBox BoxOf(float x, float y, float w, float h, float radius) {
    const float r = std::clamp(radius, 0.0f, std::min(w, h) * 0.5f);
    return {x + w * 0.5f, y + h * 0.5f, w * 0.5f, h * 0.5f, r};
}

// Fills the rounded rectangle row by row; rowColour(y) gives each row's colour.
template <class RowColour>
void FillRows(const Surface& surface, const DrawRect& rect, float radius, RowColour rowColour) {
    const DrawRect r = Draw_Intersect(rect, surface.clip);
    if (Draw_IsEmpty(r)) return;
    const float rad = std::clamp(radius, 0.0f, std::min(rect.width, rect.height) * 0.5f);
    const int32_t zone = static_cast<int32_t>(std::ceil(rad));
    const float top = static_cast<float>(rect.y) + rad;
    const float bottom = static_cast<float>(rect.y) + static_cast<float>(rect.height) - rad;
    const float leftCentre = static_cast<float>(rect.x) + rad;
    const float rightCentre = static_cast<float>(rect.x) + static_cast<float>(rect.width) - rad;
    const int32_t left = rect.x;
    const int32_t right = rect.x + rect.width;
    const int32_t clipL = r.x;
    const int32_t clipR = r.x + r.width;

    for (int32_t y = r.y; y < r.y + r.height; ++y) {
        const Colour565 colour = rowColour(y);
        const uint32_t pixel = Draw_PixelFrom565(colour);
        const Fields565 fields = Draw_Fields(colour);
        uint32_t* row = surface.pixels + static_cast<ptrdiff_t>(y) * surface.pixelsPerRow;
        const float py = static_cast<float>(y) + 0.5f;
        float dy = 0.0f;
        if (py < top)
            dy = top - py;
        else if (py > bottom)
            dy = py - bottom;
        if (dy <= 0.0f || zone == 0) {
            std::fill(row + clipL, row + clipR, pixel);
            continue;
        }
        const float dy2 = dy * dy;
        const int32_t leftEnd = std::min(left + zone, right);
        const int32_t rightStart = std::max(right - zone, leftEnd);
        for (int32_t x = std::max(left, clipL); x < std::min(leftEnd, clipR); ++x) {
            const float dx = std::max(leftCentre - (static_cast<float>(x) + 0.5f), 0.0f);
            Put(row + x, fields, pixel, Coverage(std::sqrt(dx * dx + dy2) - rad));
        }
        if (std::max(leftEnd, clipL) < std::min(rightStart, clipR))
            std::fill(row + std::max(leftEnd, clipL), row + std::min(rightStart, clipR), pixel);
        for (int32_t x = std::max(rightStart, clipL); x < std::min(right, clipR); ++x) {
            const float dx = std::max((static_cast<float>(x) + 0.5f) - rightCentre, 0.0f);
            Put(row + x, fields, pixel, Coverage(std::sqrt(dx * dx + dy2) - rad));
        }
    }
}

}  // namespace

void Draw_FillRoundRect(const Surface& surface, const DrawRect& rect, float radius, Colour565 colour) {
    FillRows(surface, rect, radius, [colour](int32_t) { return colour; });
}

void Draw_FillRoundRectGradient(const Surface& surface, const DrawRect& rect, float radius, Colour565 top,
                                Colour565 bottom) {
    FillRows(surface, rect, radius,
             [&](int32_t y) { return Draw_GradientAt(top, bottom, y - rect.y, rect.height); });
}

void Draw_StrokeRoundRect(const Surface& surface, const DrawRect& rect, float radius, float thickness,
                          Colour565 colour) {
    if (thickness <= 0.0f) return;
    const float w = static_cast<float>(rect.width);
    const float h = static_cast<float>(rect.height);
    if (thickness * 2.0f >= std::min(w, h)) return Draw_FillRoundRect(surface, rect, radius, colour);
    const DrawRect r = Draw_Intersect(rect, surface.clip);
    if (Draw_IsEmpty(r)) return;

    const RoundBox outer = BoxOf(static_cast<float>(rect.x), static_cast<float>(rect.y), w, h, radius);
    const RoundBox inner =
        BoxOf(static_cast<float>(rect.x) + thickness, static_cast<float>(rect.y) + thickness,
              w - 2 * thickness, h - 2 * thickness, outer.radius - thickness);
    // Rows this far from the top and bottom edges cross the outline only in
    // their left and right bands.
    const int32_t band = static_cast<int32_t>(std::ceil(std::max(outer.radius, thickness))) + 1;
    const uint32_t pixel = Draw_PixelFrom565(colour);
    const Fields565 fields = Draw_Fields(colour);
    const int32_t clipL = r.x;
    const int32_t clipR = r.x + r.width;

    auto paint = [&](uint32_t* row, int32_t x0, int32_t x1, float py) {
        for (int32_t x = std::max(x0, clipL); x < std::min(x1, clipR); ++x) {
            const float px = static_cast<float>(x) + 0.5f;
            const float c = Coverage(outer.Distance(px, py)) - Coverage(inner.Distance(px, py));
            Put(row + x, fields, pixel, c);
        }
    };
    const int32_t middleStart = rect.x + band;
    const int32_t middleEnd = rect.x + rect.width - band;
    for (int32_t y = r.y; y < r.y + r.height; ++y) {
        uint32_t* row = surface.pixels + static_cast<ptrdiff_t>(y) * surface.pixelsPerRow;
        const float py = static_cast<float>(y) + 0.5f;
        if (middleStart >= middleEnd) {
            paint(row, rect.x, rect.x + rect.width, py);
            continue;
        }
        paint(row, rect.x, middleStart, py);
        paint(row, middleEnd, rect.x + rect.width, py);
        if (y < rect.y + band || y >= rect.y + rect.height - band) {
            // Between the corners the top and bottom edges are straight: one
            // coverage for the whole span.
            const float px = static_cast<float>(middleStart) + 0.5f;
            const uint32_t alpha =
                AlphaOf(Coverage(outer.Distance(px, py)) - Coverage(inner.Distance(px, py)));
            const int32_t x0 = std::max(middleStart, clipL), x1 = std::min(middleEnd, clipR);
            if (alpha >= 256) {
                if (x0 < x1) std::fill(row + x0, row + x1, pixel);
            } else if (alpha > 0) {
                for (int32_t x = x0; x < x1; ++x) row[x] = Draw_BlendFields(row[x], fields, alpha);
            }
        }
    }
}
