// Writes the toolkit's font entry (layout in ui/font/Font_Format.h) from
// outlines already in sub-units.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct FontPoint {
    int32_t x = 0;
    int32_t y = 0;
    bool onCurve = true;
};

struct FontGlyphSource {
    std::vector<std::vector<FontPoint>> contours;  // each starts on the curve and is closed
    int32_t advance = 0;                           // sub-units, allowance included
    int32_t stemX = 0;                             // left edge of the main stem, 0 for none
    int32_t secondStemX = 0;                       // left edge of a second stem right of it, 0 for none
};

struct FontZoneSource {
    int32_t flat = 0;
    int32_t overshoot = 0;
};

struct FontKernSource {
    uint16_t left = 0;
    uint16_t right = 0;
    int32_t adjust = 0;
};

struct FontSource {
    uint8_t designSize = 48;
    int32_t ascent = 0;
    uint16_t replacementGlyph = 0;
    std::vector<std::pair<uint16_t, uint16_t>> characters;  // (code point, glyph), any order
    std::vector<FontGlyphSource> glyphs;
    std::vector<FontZoneSource> zones;
    std::vector<FontKernSource> kerning;
};

// The entry's bytes, or an empty vector with `error` set when something does
// not fit the layout (a glyph body over 510 bytes, a coordinate out of range).
std::vector<uint8_t> Font_Encode(const FontSource& source, std::string* error);
