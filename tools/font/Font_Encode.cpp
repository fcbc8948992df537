// The font entry writer: header, character arrays, glyph offsets, glyph
// records with delta-coded points, then zones and kerning pairs.
#include "Font_Encode.h"

#include "ui/font/Font_Format.h"

#include <algorithm>
#include <cstdlib>

namespace {

void Put16(std::vector<uint8_t>& out, int32_t v) {
    out.push_back(static_cast<uint8_t>(v & 255));
    out.push_back(static_cast<uint8_t>((v >> 8) & 255));
}

bool FitsI16(int32_t v) {
    return v >= -32768 && v <= 32767;
}

// Drops on-curve points that lie exactly midway between two control points:
// the reader puts them back.
std::vector<FontPoint> DropImpliedPoints(const std::vector<FontPoint>& contour) {
    std::vector<FontPoint> kept;
    const size_t n = contour.size();
    for (size_t i = 0; i < n; ++i) {
        const FontPoint& p = contour[i];
        if (i > 0 && p.onCurve) {
            const FontPoint& prev = contour[i - 1];
            const FontPoint& next = contour[(i + 1) % n];
            if (!prev.onCurve && !next.onCurve && prev.x + next.x == 2 * p.x && prev.y + next.y == 2 * p.y)
                continue;
        }
        kept.push_back(p);
    }
    return kept;
}

bool EncodeGlyph(const FontGlyphSource& glyph, std::vector<uint8_t>& out, std::string* error) {
    std::vector<std::vector<FontPoint>> contours;
    for (const auto& c : glyph.contours)
        if (c.size() >= 2) contours.push_back(DropImpliedPoints(c));
    if (contours.size() > 255) return *error = "too many contours", false;

    std::vector<uint8_t> counts, flags, xs, ys;
    int32_t lastX = 0, lastY = 0;
    for (const auto& c : contours) {
        if (c.size() > 255) return *error = "contour with more than 255 points", false;
        counts.push_back(static_cast<uint8_t>(c.size()));
        for (const FontPoint& p : c) {
            uint8_t f = p.onCurve ? kFontOnCurve : 0;
            auto delta = [&](int32_t d, uint8_t shortBit, uint8_t signBit, std::vector<uint8_t>& to) {
                if (d == 0) {
                    f |= signBit;
                } else if (std::abs(d) <= 255) {
                    f |= shortBit;
                    if (d > 0) f |= signBit;
                    to.push_back(static_cast<uint8_t>(std::abs(d)));
                } else {
                    Put16(to, d);
                }
            };
            const int32_t dx = p.x - lastX, dy = p.y - lastY;
            if (!FitsI16(dx) || !FitsI16(dy)) return *error = "coordinate out of range", false;
            delta(dx, kFontXShort, kFontXSameOrPositive, xs);
            delta(dy, kFontYShort, kFontYSameOrPositive, ys);
            flags.push_back(f);
            lastX = p.x;
            lastY = p.y;
        }
    }
    std::vector<uint8_t> body;
    body.insert(body.end(), counts.begin(), counts.end());
    body.insert(body.end(), flags.begin(), flags.end());
    body.insert(body.end(), xs.begin(), xs.end());
    body.insert(body.end(), ys.begin(), ys.end());
    if (body.size() % 2) body.push_back(0);
    if (body.size() / 2 > 255) return *error = "glyph body over 510 bytes", false;
    if (glyph.advance < 0 || glyph.advance > 65535 || !FitsI16(glyph.stemX) || !FitsI16(glyph.secondStemX))
        return *error = "advance or stem out of range", false;

    out.push_back(static_cast<uint8_t>(contours.size()));
    out.push_back(static_cast<uint8_t>(body.size() / 2));
    Put16(out, glyph.advance);
    Put16(out, glyph.stemX);
    Put16(out, glyph.secondStemX);
    out.insert(out.end(), body.begin(), body.end());
    return true;
}

}  // namespace

std::vector<uint8_t> Font_Encode(const FontSource& source, std::string* error) {
    std::string scratch;
    if (!error) error = &scratch;
    const size_t g = source.glyphs.size();
    auto chars = source.characters;
    std::sort(chars.begin(), chars.end());
    chars.erase(std::unique(chars.begin(), chars.end(),
                            [](const auto& a, const auto& b) { return a.first == b.first; }),
                chars.end());
    if (g == 0 || g > 65535 || chars.size() > 65535 || source.ascent < 0 || source.ascent > 65535 ||
        source.replacementGlyph >= g) {
        *error = "header field out of range";
        return {};
    }
    for (const auto& c : chars)
        if (c.second >= g) {
            *error = "character maps to a missing glyph";
            return {};
        }

    std::vector<uint8_t> out = {'S', 'Q', 'F', source.designSize};
    Put16(out, source.ascent);
    Put16(out, source.replacementGlyph);
    Put16(out, static_cast<int32_t>(g));
    Put16(out, static_cast<int32_t>(chars.size()));
    for (const auto& c : chars) Put16(out, c.first);
    for (const auto& c : chars) Put16(out, c.second);
    const size_t offsetsAt = out.size();
    out.resize(out.size() + 4 * g);
    for (size_t i = 0; i < g; ++i) {
        const uint32_t at = static_cast<uint32_t>(out.size());
        for (int b = 0; b < 4; ++b) out[offsetsAt + 4 * i + b] = static_cast<uint8_t>(at >> (8 * b));
        if (!EncodeGlyph(source.glyphs[i], out, error)) {
            *error = "glyph " + std::to_string(i) + ": " + *error;
            return {};
        }
    }

    Put16(out, static_cast<int32_t>(source.zones.size()));
    for (const auto& z : source.zones) {
        Put16(out, z.flat);
        Put16(out, z.overshoot);
    }
    auto kerning = source.kerning;
    std::sort(kerning.begin(), kerning.end(), [](const auto& a, const auto& b) {
        return a.left != b.left ? a.left < b.left : a.right < b.right;
    });
    Put16(out, static_cast<int32_t>(kerning.size()));
    for (const auto& k : kerning) {
        Put16(out, k.left);
        Put16(out, k.right);
        Put16(out, k.adjust);
    }
    return out;
}
