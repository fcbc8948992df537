// pellucida-font: builds the toolkit's font entry from a TrueType file.
//
//   pellucida-font <font.ttf> <font.fnt>
//
// Reads the outlines, metrics and kerning through stb_truetype, keeps the
// characters the program shows (Latin-1, typographic punctuation, arrows and
// a few symbols and Greek letters of astronomy), scales everything to
// sub-units of the design size, measures the alignment zones and each
// glyph's main stem, and writes the entry with Font_Encode.
#define STB_TRUETYPE_IMPLEMENTATION
#include <stb/stb_truetype.h>

#include "Font_Encode.h"
#include "ui/font/Font_Format.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <tuple>
#include <vector>

namespace {

constexpr uint8_t kDesignSize = 48;

// Latin-1 and the rest of what the program's wording and readouts use.
std::vector<int> WantedCharacters() {
    std::vector<int> out;
    for (int c = 0x20; c <= 0x7E; ++c) out.push_back(c);
    for (int c = 0xA0; c <= 0xFF; ++c) out.push_back(c);
    const int extra[] = {
        0x0152, 0x0153, 0x0160, 0x0161, 0x0178, 0x017D, 0x017E, 0x0192,  // the rest of Windows-1252
        0x0394, 0x03A3, 0x03A9, 0x03B1, 0x03B2, 0x03B3, 0x03B4, 0x03BB,  // Greek of astronomy
        0x03BC, 0x03C0, 0x03C3,                                          //
        0x2009, 0x2013, 0x2014, 0x2018, 0x2019, 0x201A, 0x201C, 0x201D,  // punctuation
        0x201E, 0x2020, 0x2021, 0x2022, 0x2026, 0x2030, 0x2032, 0x2033,  //
        0x2039, 0x203A, 0x20AC, 0x2122,                                  //
        0x2190, 0x2191, 0x2192, 0x2193, 0x2194, 0x2195, 0x21BA, 0x21BB,  // arrows
        0x2212, 0x221E, 0x2248, 0x2260, 0x2264, 0x2265,                  // mathematics
        0x25B2, 0x25B6, 0x25BC, 0x25C0, 0x25CF, 0x2605, 0x2713, 0x2717,  // marks
        0xFFFD,                                                          // replacement
    };
    out.insert(out.end(), std::begin(extra), std::end(extra));
    return out;
}

struct Scaler {
    double k = 1.0;  // sub-units per font unit
    int32_t operator()(double v) const { return static_cast<int32_t>(std::lround(v * k)); }
};

// The outline as contours of points, each starting on the curve.
std::vector<std::vector<FontPoint>> Contours(const stbtt_vertex* v, int count, const Scaler& s) {
    std::vector<std::vector<FontPoint>> out;
    for (int i = 0; i < count; ++i) {
        switch (v[i].type) {
            case STBTT_vmove:
                out.emplace_back();
                out.back().push_back({s(v[i].x), s(v[i].y), true});
                break;
            case STBTT_vline:
                if (!out.empty()) out.back().push_back({s(v[i].x), s(v[i].y), true});
                break;
            case STBTT_vcurve:
                if (!out.empty()) {
                    out.back().push_back({s(v[i].cx), s(v[i].cy), false});
                    out.back().push_back({s(v[i].x), s(v[i].y), true});
                }
                break;
            default:  // cubic curves come only from CFF fonts
                break;
        }
    }
    // Contours come back closed onto their first point; the format closes them itself.
    for (auto& c : out) {
        if (c.size() > 1 && c.back().onCurve && c.back().x == c.front().x && c.back().y == c.front().y)
            c.pop_back();
        // Consecutive duplicates add nothing.
        std::vector<FontPoint> clean;
        for (const auto& p : c)
            if (clean.empty() || p.x != clean.back().x || p.y != clean.back().y ||
                p.onCurve != clean.back().onCurve)
                clean.push_back(p);
        c = clean;
    }
    return out;
}

// The left edges of the glyph's two main stems, left to right: the longest
// upward vertical lines (outer contours run clockwise, so left edges of
// filled areas go up) at least minLength long, the second at least minGap
// from the first. 0 where there is none.
std::pair<int32_t, int32_t> Stems(const stbtt_vertex* v, int count, int minLength, int minGap,
                                  const Scaler& s) {
    std::vector<std::pair<int, int>> edges;  // (length, x)
    int px = 0, py = 0;
    for (int i = 0; i < count; ++i) {
        if (v[i].type == STBTT_vline && v[i].x == px && v[i].y - py >= minLength)
            edges.emplace_back(v[i].y - py, v[i].x);
        px = v[i].x;
        py = v[i].y;
    }
    // Longest first; of equal length the leftmost.
    std::sort(edges.begin(), edges.end(),
              [](auto a, auto b) { return a.first != b.first ? a.first > b.first : a.second < b.second; });
    if (edges.empty()) return {0, 0};
    const int first = edges[0].second;
    for (size_t i = 1; i < edges.size(); ++i)
        if (std::abs(edges[i].second - first) >= minGap) {
            const int second = edges[i].second;
            return {s(std::min(first, second)), s(std::max(first, second))};
        }
    return {s(first), 0};
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: pellucida-font <font.ttf> <font.fnt>\n");
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    std::vector<unsigned char> ttf((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    stbtt_fontinfo info;
    if (ttf.empty() || !stbtt_InitFont(&info, ttf.data(), stbtt_GetFontOffsetForIndex(ttf.data(), 0))) {
        std::fprintf(stderr, "pellucida-font: cannot read %s\n", argv[1]);
        return 1;
    }
    int ascent = 0, descent = 0, lineGap = 0;
    stbtt_GetFontVMetrics(&info, &ascent, &descent, &lineGap);
    Scaler s;
    s.k = double(kDesignSize) * kFontSubUnits / double(ascent - descent);

    FontSource font;
    font.designSize = kDesignSize;
    font.ascent = s(ascent);
    const int32_t allowance = (kDesignSize / 12) * kFontSubUnits;

    auto box = [&](int codepoint, int* x0, int* y0, int* x1, int* y1) {
        *x0 = *y0 = *x1 = *y1 = 0;
        stbtt_GetCodepointBox(&info, codepoint, x0, y0, x1, y1);
    };
    int bx0, by0, bx1, by1;
    box('x', &bx0, &by0, &bx1, &by1);
    const int xHeight = by1;
    const int minStem = xHeight / 3;

    std::map<int, uint16_t> glyphOf;  // TrueType glyph -> our glyph index
    std::vector<int> ttfGlyphs;
    for (int c : WantedCharacters()) {
        const int g = stbtt_FindGlyphIndex(&info, c);
        if (g == 0) {
            std::fprintf(stderr, "pellucida-font: U+%04X not in the font, left out\n", c);
            continue;
        }
        auto [it, fresh] = glyphOf.try_emplace(g, static_cast<uint16_t>(ttfGlyphs.size()));
        if (fresh) ttfGlyphs.push_back(g);
        font.characters.emplace_back(static_cast<uint16_t>(c), it->second);
        if (c == 0xFFFD) font.replacementGlyph = it->second;
    }
    for (int g : ttfGlyphs) {
        stbtt_vertex* v = nullptr;
        const int n = stbtt_GetGlyphShape(&info, g, &v);
        int advance = 0, lsb = 0;
        stbtt_GetGlyphHMetrics(&info, g, &advance, &lsb);
        FontGlyphSource glyph;
        glyph.contours = Contours(v, n, s);
        glyph.advance = s(advance) + allowance;
        std::tie(glyph.stemX, glyph.secondStemX) = Stems(v, n, minStem, minStem, s);
        stbtt_FreeShape(&info, v);
        font.glyphs.push_back(std::move(glyph));
    }

    // Zones: baseline, x-height, cap height, ascender, descender.
    auto top = [&](int c) {
        box(c, &bx0, &by0, &bx1, &by1);
        return by1;
    };
    auto bottom = [&](int c) {
        box(c, &bx0, &by0, &bx1, &by1);
        return by0;
    };
    font.zones = {{s(bottom('p')), s(bottom('p'))},
                  {0, s(bottom('o'))},
                  {s(top('x')), s(top('o'))},
                  {s(top('H')), s(top('O'))},
                  {s(top('l')), s(top('l'))}};

    for (size_t a = 0; a < ttfGlyphs.size(); ++a)
        for (size_t b = 0; b < ttfGlyphs.size(); ++b) {
            const int kern = stbtt_GetGlyphKernAdvance(&info, ttfGlyphs[a], ttfGlyphs[b]);
            const int32_t adjust = s(kern);
            if (adjust != 0)
                font.kerning.push_back({static_cast<uint16_t>(a), static_cast<uint16_t>(b), adjust});
        }

    std::string error;
    const std::vector<uint8_t> bytes = Font_Encode(font, &error);
    if (bytes.empty()) {
        std::fprintf(stderr, "pellucida-font: %s\n", error.c_str());
        return 1;
    }
    std::ofstream out(argv[2], std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!out) {
        std::fprintf(stderr, "pellucida-font: cannot write %s\n", argv[2]);
        return 1;
    }
    std::printf("pellucida-font: %zu characters, %zu glyphs, %zu kerning pairs, %zu bytes\n",
                font.characters.size(), font.glyphs.size(), font.kerning.size(), bytes.size());
    return 0;
}
