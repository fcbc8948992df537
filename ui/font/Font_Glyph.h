// Glyphs rendered at a pixel height and kept in the font's cache (the
// font module's own; widgets use Font.h).
#pragma once

#include "ui/font/Font.h"

// The cache of one pixel height, made (and the least recently used height
// dropped) when it is not there.
FontSizeCache& FontGlyph_Size(const Font& font, int32_t pixelHeight);

// The glyph's coverage mask at the cache's height, rendered on first use.
const FontGlyphImage& FontGlyph_Image(const Font& font, FontSizeCache& size, uint16_t glyph);

// A length in sub-units as whole pixels at `scale`, rounded to nearest.
inline int32_t FontGlyph_Pixels(int32_t subUnits, int32_t scale) {
    return static_cast<int32_t>((int64_t{subUnits} * scale + 8192) >> 14);
}
