// Writes small font entries by hand, following the documented layout, so
// that the reader is checked against the layout rather than against the tool
// that made the shipped font.
#pragma once

#include "ui/font/Font.h"
#include "ui/font/Font_Format.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <tuple>
#include <vector>

struct TestGlyph {
    uint16_t code = 0;
    uint16_t advance = 0;  // sub-units
    int16_t stemX = 0;
    // Contours of (x, y) points in sub-units, all on the curve.
    std::vector<std::vector<std::pair<int, int>>> contours;
};

struct TestFont {
    uint8_t designSize = 48;
    uint16_t ascent = 36 * kFontSubUnits;
    uint16_t replacement = 0;
    std::vector<TestGlyph> glyphs;  // glyph i maps from glyphs[i].code; codes ascending
    std::vector<std::tuple<uint16_t, uint16_t, int16_t>> kerning;

    static void Put16(std::vector<uint8_t>& out, std::initializer_list<int> values) {
        for (int v : values) {
            out.push_back(uint8_t(v & 255));
            out.push_back(uint8_t((v >> 8) & 255));
        }
    }

    std::vector<uint8_t> Bytes() const {
        std::vector<uint8_t> out = {'S', 'Q', 'F', designSize};
        Put16(out, {ascent, replacement, int(glyphs.size()), int(glyphs.size())});
        for (const auto& g : glyphs) Put16(out, {g.code});
        for (size_t i = 0; i < glyphs.size(); ++i) Put16(out, {int(i)});
        const size_t offsets = out.size();
        out.resize(out.size() + 4 * glyphs.size());
        for (size_t i = 0; i < glyphs.size(); ++i) {
            const uint32_t at = uint32_t(out.size());
            for (int b = 0; b < 4; ++b) out[offsets + 4 * i + b] = uint8_t(at >> (8 * b));
            const TestGlyph& g = glyphs[i];
            // Every delta as an i16: the long form, which the reader must take too.
            std::vector<uint8_t> counts, flags, xs, ys;
            int lx = 0, ly = 0;
            for (size_t c = 0; c < g.contours.size(); ++c) {
                counts.push_back(uint8_t(g.contours[c].size()));
                for (auto [x, y] : g.contours[c]) {
                    flags.push_back(kFontOnCurve);
                    Put16(xs, {x - lx});
                    Put16(ys, {y - ly});
                    lx = x;
                    ly = y;
                }
            }
            std::vector<uint8_t> body = counts;
            for (const auto* part : {&flags, &xs, &ys}) body.insert(body.end(), part->begin(), part->end());
            if (body.size() % 2) body.push_back(0);
            out.push_back(uint8_t(g.contours.size()));
            out.push_back(uint8_t(body.size() / 2));
            Put16(out, {g.advance, g.stemX, 0});  // no second stem
            out.insert(out.end(), body.begin(), body.end());
        }
        Put16(out, {0});  // no zones
        Put16(out, {int(kerning.size())});
        for (auto [l, r, a] : kerning) Put16(out, {l, r, a});
        return out;
    }
};

// A box from (x0, y0) to (x1, y1) in design units, as one clockwise contour.
inline std::vector<std::pair<int, int>> TestFont_Box(int x0, int y0, int x1, int y1) {
    const int s = kFontSubUnits;
    return {{x0 * s, y0 * s}, {x0 * s, y1 * s}, {x1 * s, y1 * s}, {x1 * s, y0 * s}};
}

// A box 8 x 20 design units standing on the baseline at x 2, advance 18 units
// (14 after the default spacing of -4), its stem at x 2 unless told.
inline TestGlyph TestFont_BoxGlyph(uint16_t code, int16_t stem = 2 * kFontSubUnits) {
    TestGlyph g;
    g.code = code;
    g.advance = 18 * kFontSubUnits;
    g.stemX = stem;
    g.contours = {TestFont_Box(2, 0, 10, 20)};
    return g;
}

inline std::unique_ptr<Font> TestFont_Load(const TestFont& f) {
    const std::vector<uint8_t> b = f.Bytes();
    return Font_Load(b.data(), b.size());
}

// A font of the given glyphs, their codes ascending, and kerning pairs.
inline std::unique_ptr<Font> TestFont_LoadGlyphs(
    std::vector<TestGlyph> glyphs, std::vector<std::tuple<uint16_t, uint16_t, int16_t>> kerning = {}) {
    TestFont f;
    f.glyphs = std::move(glyphs);
    f.kerning = std::move(kerning);
    return TestFont_Load(f);
}
