// Parsing the font entry (layout in Font_Format.h) into outlines, and the
// lookups of characters and kerning pairs. Everything is checked against the
// entry's size: the archive is data and may be damaged.
#include "ui/font/Font.h"

#include "ui/font/Font_Format.h"

#include <algorithm>
#include <cstring>

namespace {

class Reader {
public:
    Reader(const uint8_t* data, size_t size) : data_(data), size_(size) {}
    bool Has(size_t at, size_t n) const { return at <= size_ && n <= size_ - at; }
    uint32_t U8(size_t at) const { return data_[at]; }
    uint32_t U16(size_t at) const { return data_[at] | (uint32_t{data_[at + 1]} << 8); }
    int32_t I16(size_t at) const { return static_cast<int16_t>(U16(at)); }
    uint32_t U32(size_t at) const { return U16(at) | (U16(at + 2) << 16); }

private:
    const uint8_t* data_;
    size_t size_;
};

// Decodes one glyph record's points into the font. False when the record is malformed.
bool DecodeGlyph(const Reader& r, size_t at, Font& font, size_t* recordEnd) {
    if (!r.Has(at, kFontGlyphHeadSize)) return false;
    const uint32_t contours = r.U8(at);
    const size_t bodyAt = at + kFontGlyphHeadSize;
    const size_t bodyEnd = bodyAt + 2 * size_t{r.U8(at + 1)};
    if (!r.Has(bodyAt, bodyEnd - bodyAt)) return false;

    FontGlyphData glyph;
    glyph.advance = static_cast<int32_t>(r.U16(at + 2));
    glyph.stemX = r.I16(at + 4);
    glyph.secondStemX = r.I16(at + 6);
    glyph.firstPoint = static_cast<uint32_t>(font.points.size());
    glyph.firstContour = static_cast<uint32_t>(font.contourSizes.size());
    glyph.contourCount = static_cast<uint16_t>(contours);

    size_t p = bodyAt;
    if (contours > bodyEnd - bodyAt) return false;
    uint32_t pointCount = 0;
    for (uint32_t c = 0; c < contours; ++c) {
        font.contourSizes.push_back(static_cast<uint16_t>(r.U8(p)));
        pointCount += r.U8(p++);
    }
    if (pointCount > bodyEnd - p) return false;
    const size_t flagsAt = p;
    p += pointCount;

    auto readDeltas = [&](uint8_t shortBit, uint8_t signBit, bool isX) {
        int32_t value = 0;
        for (uint32_t i = 0; i < pointCount; ++i) {
            const uint32_t f = r.U8(flagsAt + i);
            if (f & shortBit) {
                if (p + 1 > bodyEnd) return false;
                const int32_t m = static_cast<int32_t>(r.U8(p++));
                value += (f & signBit) ? m : -m;
            } else if (!(f & signBit)) {
                if (p + 2 > bodyEnd) return false;
                value += r.I16(p);
                p += 2;
            }
            if (value < INT16_MIN || value > INT16_MAX) return false;
            FontPointData& point = font.points[glyph.firstPoint + i];
            (isX ? point.x : point.y) = static_cast<int16_t>(value);
        }
        return true;
    };
    font.points.resize(font.points.size() + pointCount);
    for (uint32_t i = 0; i < pointCount; ++i)
        font.points[glyph.firstPoint + i].onCurve = (r.U8(flagsAt + i) & kFontOnCurve) != 0;
    if (!readDeltas(kFontXShort, kFontXSameOrPositive, true)) return false;
    if (!readDeltas(kFontYShort, kFontYSameOrPositive, false)) return false;

    // Every contour starts on the curve.
    uint32_t first = glyph.firstPoint;
    for (uint32_t c = 0; c < contours; ++c) {
        const uint32_t n = font.contourSizes[glyph.firstContour + c];
        if (n > 0 && !font.points[first].onCurve) return false;
        first += n;
    }
    font.glyphs.push_back(glyph);
    *recordEnd = bodyEnd;
    return true;
}

}  // namespace

std::unique_ptr<Font> Font_Load(const uint8_t* bytes, size_t size) {
    if (!bytes || size < kFontHeaderSize || std::memcmp(bytes, kFontMagic, sizeof kFontMagic) != 0)
        return nullptr;
    const Reader r(bytes, size);
    auto font = std::make_unique<Font>();
    font->designSize = static_cast<uint8_t>(r.U8(3));
    if (font->designSize == 0) return nullptr;
    font->letterSpacing = -static_cast<int32_t>(font->designSize / 12);
    font->ascent = static_cast<int32_t>(r.U16(4));
    font->replacementGlyph = static_cast<uint16_t>(r.U16(6));
    const uint32_t g = r.U16(8);
    const uint32_t n = r.U16(10);
    if (g == 0 || font->replacementGlyph >= g) return nullptr;

    const size_t codesAt = kFontHeaderSize;
    const size_t glyphsAt = codesAt + 2 * size_t{n};
    const size_t offsetsAt = glyphsAt + 2 * size_t{n};
    if (!r.Has(offsetsAt, 4 * size_t{g})) return nullptr;
    for (uint32_t i = 0; i < n; ++i) {
        const uint32_t code = r.U16(codesAt + 2 * i);
        const uint32_t glyph = r.U16(glyphsAt + 2 * i);
        if (glyph >= g || (i > 0 && code <= font->codePoints.back())) return nullptr;
        font->codePoints.push_back(static_cast<uint16_t>(code));
        font->glyphOfCode.push_back(static_cast<uint16_t>(glyph));
    }

    size_t tableAt = offsetsAt + 4 * size_t{g};
    font->glyphs.reserve(g);
    for (uint32_t i = 0; i < g; ++i) {
        size_t end = 0;
        if (!DecodeGlyph(r, r.U32(offsetsAt + 4 * i), *font, &end)) return nullptr;
        tableAt = std::max(tableAt, end);
    }

    // The trailing table: zones, then kerning pairs.
    if (!r.Has(tableAt, 2)) return nullptr;
    const uint32_t z = r.U16(tableAt);
    tableAt += 2;
    if (!r.Has(tableAt, 4 * size_t{z} + 2)) return nullptr;
    for (uint32_t i = 0; i < z; ++i, tableAt += 4)
        font->zones.push_back({r.I16(tableAt), r.I16(tableAt + 2)});
    const uint32_t k = r.U16(tableAt);
    tableAt += 2;
    if (!r.Has(tableAt, 6 * size_t{k})) return nullptr;
    for (uint32_t i = 0; i < k; ++i, tableAt += 6) {
        const uint32_t left = r.U16(tableAt), right = r.U16(tableAt + 2);
        if (left >= g || right >= g) return nullptr;
        font->kerning.push_back({(left << 16) | right, r.I16(tableAt + 4)});
    }
    std::sort(font->kerning.begin(), font->kerning.end(),
              [](const FontKernData& a, const FontKernData& b) { return a.pair < b.pair; });
    return font;
}

int32_t Font_Scale(const Font& font, int32_t pixelHeight) {
    return font.designSize ? (pixelHeight << 10) / font.designSize : 0;
}

bool Font_HasCharacter(const Font& font, uint32_t codePoint) {
    return std::binary_search(font.codePoints.begin(), font.codePoints.end(), codePoint);
}

uint16_t Font_GlyphFor(const Font& font, uint32_t codePoint) {
    const auto it = std::lower_bound(font.codePoints.begin(), font.codePoints.end(), codePoint);
    if (it == font.codePoints.end() || *it != codePoint) return font.replacementGlyph;
    return font.glyphOfCode[static_cast<size_t>(it - font.codePoints.begin())];
}

int32_t Font_Kerning(const Font& font, uint16_t left, uint16_t right) {
    const uint32_t pair = (uint32_t{left} << 16) | right;
    const auto it = std::lower_bound(font.kerning.begin(), font.kerning.end(), pair,
                                     [](const FontKernData& k, uint32_t p) { return k.pair < p; });
    return it != font.kerning.end() && it->pair == pair ? it->adjust : 0;
}
