// The signed-area scanline fill behind the font. For a segment running down
// through a row, every cell it passes gains the part of the row's height it
// spans (its "cover"), split between the cell it lies in and the next by
// the area left of it; summing the cells from the left edge then yields the
// covered fraction of each pixel without visiting any pixel twice.
#include "ui/font/Glyph_Raster.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

void GlyphRaster_Begin(GlyphRaster& raster, int32_t width, int32_t height) {
    raster.width = std::max(width, 0);
    raster.height = std::max(height, 0);
    raster.cells.assign(static_cast<size_t>(raster.width + 2) * static_cast<size_t>(raster.height), 0.0f);
}

void GlyphRaster_Line(GlyphRaster& raster, float x0, float y0, float x1, float y1) {
    if (y0 == y1 || raster.height == 0) return;
    float dir = 1.0f;
    if (y0 > y1) {
        std::swap(x0, x1);
        std::swap(y0, y1);
        dir = -1.0f;
    }
    const float maxX = static_cast<float>(raster.width);
    x0 = std::clamp(x0, 0.0f, maxX);
    x1 = std::clamp(x1, 0.0f, maxX);
    const float dxdy = (x1 - x0) / (y1 - y0);
    const int32_t stride = raster.width + 2;
    const int32_t rowStart = std::max(static_cast<int32_t>(std::floor(y0)), 0);
    const int32_t rowEnd = std::min(static_cast<int32_t>(std::ceil(y1)), raster.height);
    float x =
        x0 + dxdy * (static_cast<float>(rowStart) - y0 > 0.0f ? static_cast<float>(rowStart) - y0 : 0.0f);

    for (int32_t y = rowStart; y < rowEnd; ++y) {
        float* row = raster.cells.data() + static_cast<ptrdiff_t>(y) * stride;
        const float top = std::max(static_cast<float>(y), y0);
        const float bottom = std::min(static_cast<float>(y + 1), y1);
        const float dy = bottom - top;
        const float xNext = std::clamp(x + dxdy * dy, 0.0f, maxX);
        const float d = dy * dir;
        const float a = std::min(x, xNext);
        const float b = std::max(x, xNext);
        const float aFloor = std::floor(a);
        const int32_t ai = static_cast<int32_t>(aFloor);
        const float bCeil = std::ceil(b);
        const int32_t bi = static_cast<int32_t>(bCeil);
        if (bi <= ai + 1) {
            // Within one cell: the area right of the segment's midpoint goes to the next cell.
            const float mid = 0.5f * (x + xNext) - aFloor;
            row[ai] += d - d * mid;
            row[ai + 1] += d * mid;
        } else {
            const float s = 1.0f / (b - a);
            const float af = a - aFloor;
            const float a0 = 0.5f * s * (1.0f - af) * (1.0f - af);
            const float bf = b - bCeil + 1.0f;
            const float am = 0.5f * s * bf * bf;
            row[ai] += d * a0;
            if (bi == ai + 2) {
                row[ai + 1] += d * (1.0f - a0 - am);
            } else {
                const float a1 = s * (1.5f - af);
                row[ai + 1] += d * (a1 - a0);
                for (int32_t i = ai + 2; i < bi - 1; ++i) row[i] += d * s;
                const float a2 = a1 + static_cast<float>(bi - ai - 3) * s;
                row[bi - 1] += d * (1.0f - a2 - am);
            }
            row[bi] += d * am;
        }
        x = xNext;
    }
}

void GlyphRaster_Quad(GlyphRaster& raster, float x0, float y0, float cx, float cy, float x1, float y1) {
    // A quadratic split in n pieces strays from the curve by at most |p0 - 2c + p1| / (8 n^2).
    const float ex = x0 - 2.0f * cx + x1;
    const float ey = y0 - 2.0f * cy + y1;
    const float deviation = std::sqrt(ex * ex + ey * ey);
    const int32_t n = std::clamp(static_cast<int32_t>(std::ceil(std::sqrt(deviation / 0.8f))), 1, 64);
    float px = x0, py = y0;
    for (int32_t i = 1; i <= n; ++i) {
        const float t = static_cast<float>(i) / static_cast<float>(n);
        const float u = 1.0f - t;
        const float qx = u * u * x0 + 2.0f * u * t * cx + t * t * x1;
        const float qy = u * u * y0 + 2.0f * u * t * cy + t * t * y1;
        GlyphRaster_Line(raster, px, py, qx, qy);
        px = qx;
        py = qy;
    }
}

void GlyphRaster_Resolve(const GlyphRaster& raster, uint8_t* mask, int32_t stride) {
    const int32_t cellStride = raster.width + 2;
    for (int32_t y = 0; y < raster.height; ++y) {
        const float* row = raster.cells.data() + static_cast<ptrdiff_t>(y) * cellStride;
        uint8_t* out = mask + static_cast<ptrdiff_t>(y) * stride;
        float sum = 0.0f;
        for (int32_t x = 0; x < raster.width; ++x) {
            sum += row[x];
            const float c = std::min(std::fabs(sum), 1.0f);
            out[x] = static_cast<uint8_t>(c * 255.0f + 0.5f);
        }
    }
}
