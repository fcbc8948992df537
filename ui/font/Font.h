// The toolkit's font: the "font.fnt" entry of the resource archive parsed
// into outlines, drawn at any pixel height with anti-aliasing.
//
// The pixel height is the height of a text line, ascent plus descent; the
// scale is (pixel height << 10) / design size. Glyph outlines are scaled,
// aligned to the pixel grid where it keeps them crisp (baseline, x-height,
// cap height and the main stem of each glyph on pixel boundaries), and filled
// by exact-area coverage. Each glyph is rendered once per pixel height and
// kept; the pen keeps fractions of a pixel so that spacing does not drift,
// each glyph lands on the whole pixel nearest its place, and text measures
// exactly as it draws.
//
// Text is UTF-8; bytes that do not decode and characters the font lacks draw
// the font's replacement glyph. Control characters draw nothing.
#pragma once

#include "ui/draw/Draw_Colour.h"
#include "ui/draw/Draw_Surface.h"
#include "ui/font/Glyph_Raster.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

struct FontPointData {
    int16_t x = 0;  // sub-units, y up from the baseline
    int16_t y = 0;
    bool onCurve = true;
};

struct FontGlyphData {
    uint32_t firstPoint = 0;
    uint32_t firstContour = 0;
    uint16_t contourCount = 0;
    int32_t advance = 0;      // sub-units, with the allowance the default letter spacing takes back
    int32_t stemX = 0;        // left edge of the main stem; 0 for none
    int32_t secondStemX = 0;  // left edge of a second stem right of it; 0 for none
};

struct FontZoneData {
    int32_t flat = 0;
    int32_t overshoot = 0;
};

struct FontKernData {
    uint32_t pair = 0;   // left glyph << 16 | right glyph
    int32_t adjust = 0;  // sub-units
};

// One glyph rendered at one pixel height: a coverage mask and where it sits
// relative to the pen position on the baseline.
struct FontGlyphImage {
    int32_t left = 0;
    int32_t top = 0;  // negative: above the baseline
    int32_t width = 0;
    int32_t height = 0;
    uint32_t offset = 0;  // into FontSizeCache::coverage
    bool ready = false;
};

struct FontSizeCache {
    int32_t pixelHeight = 0;
    uint64_t lastUse = 0;
    std::vector<FontGlyphImage> glyphs;  // by glyph index
    std::vector<uint8_t> coverage;
    std::vector<float> zoneFrom;  // the vertical grid fit: font heights (sub-units) ...
    std::vector<float> zoneTo;    // ... and the pixel heights they land on
};

struct Font {
    uint8_t designSize = 0;
    int32_t ascent = 0;  // sub-units
    uint16_t replacementGlyph = 0;
    int32_t letterSpacing = 0;  // design units added to every advance; Font_Load sets -designSize / 12

    std::vector<uint16_t> codePoints;  // ascending
    std::vector<uint16_t> glyphOfCode;
    std::vector<FontGlyphData> glyphs;
    std::vector<uint16_t> contourSizes;
    std::vector<FontPointData> points;
    std::vector<FontZoneData> zones;
    std::vector<FontKernData> kerning;  // ascending by pair

    // Rendered glyphs of the last few pixel heights used. Drawing fills it, so
    // a font is used from one thread (the toolkit's) only.
    mutable std::vector<FontSizeCache> cache;
    mutable uint64_t useCounter = 0;
    mutable GlyphRaster raster;  // scratch of the glyph renderer
};

// Parses the entry. Nothing when it does not begin with "SQF" or any table
// lies outside `size`: the toolkit then has no font.
std::unique_ptr<Font> Font_Load(const uint8_t* bytes, size_t size);

// (pixelHeight << 10) / design size.
int32_t Font_Scale(const Font& font, int32_t pixelHeight);

// The glyph drawn for a code point: the replacement glyph when the font lacks it.
uint16_t Font_GlyphFor(const Font& font, uint32_t codePoint);
bool Font_HasCharacter(const Font& font, uint32_t codePoint);

// Kerning between two glyphs, in sub-units (0 for pairs without an entry).
int32_t Font_Kerning(const Font& font, uint16_t left, uint16_t right);

struct TextMetrics {
    int32_t width = 0;    // advance width in pixels
    int32_t ascent = 0;   // pixels above the baseline
    int32_t descent = 0;  // pixels below it; ascent + descent is the pixel height
};

TextMetrics Font_MeasureText(const Font& font, int32_t pixelHeight, std::string_view utf8);

// Draws one line of text with its pen starting at x and its baseline at
// baselineY: the row baselineY - 1 is the last row of a capital letter.
// Returns the advance width, as Font_MeasureText gives it.
int32_t Font_DrawText(const Surface& surface, const Font& font, int32_t x, int32_t baselineY,
                      int32_t pixelHeight, std::string_view utf8, Colour565 colour);

// One line of wrapped text: a byte range of the input without the spaces or
// line feed at which it was broken, and its width in pixels.
struct TextLine {
    size_t begin = 0;
    size_t length = 0;
    int32_t width = 0;
};

// Breaks text into lines no wider than maxWidth: at line feeds, else at the
// last space that keeps the line within the width; a word wider than the
// width alone is broken between characters.
std::vector<TextLine> Font_WrapText(const Font& font, int32_t pixelHeight, std::string_view utf8,
                                    int32_t maxWidth);
