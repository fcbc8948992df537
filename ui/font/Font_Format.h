// The layout of the toolkit's font entry, "font.fnt", shared by the program
// that reads it and the tool that builds it. All numbers are little-endian.
//
//   0..2   "SQF"
//   3      design size D: the height of a text line (ascent + descent) in
//          design units. The default letter spacing is -D / 12 design units.
//   4..5   u16 ascent, the baseline's depth below the top of the line
//   6..7   u16 index of the glyph drawn for characters the font lacks
//   8..9   u16 G, the number of glyph records
//   10..11 u16 N, the number of characters
//   12     N x u16 code points, ascending
//          N x u16 the glyph index of each code point
//          G x u32 offset of each glyph record from the start of the entry
//   ...    glyph records, one after another, then the trailing table
//
// Coordinates, widths and heights are in 1/16 design unit ("sub-units"),
// x to the right and y up from the baseline, so a pixel height h maps a
// sub-unit to ((h << 10) / D) / (16 << 10) pixels.
//
// A glyph record is an 8-byte head and a body of 2 * L bytes:
//   0      C, the number of contours
//   1      L, the body's length in 16-bit units
//   2..3   u16 advance width. It includes D / 12 design units that the
//          default letter spacing takes back, so text set with the default
//          spacing has the design's own spacing.
//   4..5   i16 x of the left edge of the glyph's main vertical stem, which the
//          renderer puts on a pixel boundary so that stems stay crisp at small
//          sizes; 0 for glyphs without one (round and diagonal shapes keep
//          their designed place)
//   6..7   i16 x of the left edge of a second vertical stem right of the first
//          (the "n" of "H" or "n"), 0 for none: it goes on a pixel boundary
//          too, the part of the glyph between the two stretched or narrowed
//          by less than half a pixel
// The body holds C x u8 point counts of the contours (P points in all), then
// P x u8 point flags, the
// x deltas and then the y deltas of the points (each from the point before;
// the first from 0, 0), padded with zeros to an even length. Flags:
//   bit 0  the point is on the curve (else a quadratic control point; two
//          control points in a row imply an on-curve point midway)
//   bit 1  x delta is one byte of magnitude; bit 3 then says it is positive
//   bit 2  y delta likewise, bit 4 its sign
//   without bit 1 (bit 2): bit 3 (bit 4) set means a delta of 0, else an i16 follows
// Every contour starts with an on-curve point and is closed.
//
// The trailing table, right after the last glyph record:
//   u16 Z, then Z x (i16 flat height, i16 overshoot height): the vertical
//          alignment zones (baseline, x-height, cap height, ascender,
//          descender); a renderer puts each flat height on a pixel boundary
//          and lets round shapes overshoot it only when that is visible
//   u16 K, then K x (u16 left glyph, u16 right glyph, i16 adjustment): the
//          kerning pairs, ascending by left then right glyph
#pragma once

#include <cstdint>

inline constexpr char kFontMagic[3] = {'S', 'Q', 'F'};
inline constexpr uint32_t kFontHeaderSize = 12;
inline constexpr uint32_t kFontGlyphHeadSize = 8;
inline constexpr int32_t kFontSubUnits = 16;  // sub-units per design unit

enum FontPointFlag : uint8_t {
    kFontOnCurve = 1,
    kFontXShort = 2,
    kFontYShort = 4,
    kFontXSameOrPositive = 8,
    kFontYSameOrPositive = 16,
};
