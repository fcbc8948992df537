// Filling outlines with exact-area anti-aliasing. Each line segment adds, to
// the cells it crosses, the signed area it sweeps towards the right edge of
// the row; a running sum along each row then gives every pixel's coverage.
// Quadratic curves are flattened into segments short enough to stay within
// a tenth of a pixel of the curve. Coordinates are pixels, y down, with the
// mask's top-left corner at (0, 0).
#pragma once

#include <cstdint>
#include <vector>

struct GlyphRaster {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<float> cells;  // (width + 2) per row; kept between glyphs to avoid reallocation
};

// Clears the raster for a mask of width x height.
void GlyphRaster_Begin(GlyphRaster& raster, int32_t width, int32_t height);

void GlyphRaster_Line(GlyphRaster& raster, float x0, float y0, float x1, float y1);

void GlyphRaster_Quad(GlyphRaster& raster, float x0, float y0, float cx, float cy, float x1, float y1);

// Writes the coverage, 0..255, into `mask` (width x height, `stride` bytes
// per row). Overlapping contours add up and are held to full coverage.
void GlyphRaster_Resolve(const GlyphRaster& raster, uint8_t* mask, int32_t stride);
