// Rendering glyphs at a pixel height, with a light grid fit that keeps small
// text crisp without distorting it:
// - vertically, each alignment zone's flat height (baseline, x-height, cap
//   height, ascender, descender) lands on a pixel boundary and heights in
//   between are interpolated, so horizontal strokes and letter tops line up
//   across a line; the overshoot of round letters is kept only once it is
//   half a pixel or more, so at small sizes an "o" sits on the baseline
//   instead of smearing a faint row below it;
// - horizontally, each glyph moves by less than half a pixel so that the
//   left edge of its main stem falls on a pixel boundary, and a second stem
//   (the right leg of "H", "n", "u") is put on one too.
// Advances are not changed; the text setter puts each glyph on the whole pixel
// nearest its pen position (Font_Text.cpp).
#include "ui/font/Font_Glyph.h"

#include "ui/font/Font_Format.h"
#include "ui/font/Glyph_Raster.h"

#include <algorithm>
#include <cmath>

namespace {

// Pixel heights kept at once: a form uses one or two, a dialog a few more.
constexpr size_t kCachedSizes = 6;
// Overshoots smaller than this many pixels are folded onto their zone.
constexpr float kSmallestOvershoot = 0.5f;
// Coverage is lifted by this gamma before blending: blending in the
// framebuffer's own values makes partly covered pixels of light text on a
// dark ground look dimmer than their share, and thin stems fade.
constexpr double kCoverageGamma = 1.0 / 1.4;
// Hostile sizes are not rendered: masks stay small.
constexpr int32_t kLargestPixelHeight = 512;

struct CoverageCurve {
    uint8_t table[256];
    CoverageCurve() {
        for (int i = 0; i < 256; ++i)
            table[i] = static_cast<uint8_t>(std::lround(255.0 * std::pow(i / 255.0, kCoverageGamma)));
    }
};

void BuildZones(const Font& font, int32_t pixelHeight, FontSizeCache& size) {
    const float s = static_cast<float>(Font_Scale(font, pixelHeight)) / 16384.0f;
    std::vector<std::pair<float, float>> anchors;
    for (const FontZoneData& z : font.zones) {
        const float flat = std::round(static_cast<float>(z.flat) * s);
        anchors.emplace_back(static_cast<float>(z.flat), flat);
        if (z.overshoot == z.flat) continue;
        const float over = static_cast<float>(z.overshoot - z.flat) * s;
        anchors.emplace_back(static_cast<float>(z.overshoot),
                             flat + (std::fabs(over) < kSmallestOvershoot ? 0 : over));
    }
    // The line's own top and bottom hold too, so that accents stay within the
    // ascent and descent that Font_MeasureText reports.
    const int32_t scale = Font_Scale(font, pixelHeight);
    const int32_t ascentPixels = FontGlyph_Pixels(font.ascent, scale);
    anchors.emplace_back(static_cast<float>(font.ascent), static_cast<float>(ascentPixels));
    anchors.emplace_back(static_cast<float>(font.ascent - font.designSize * kFontSubUnits),
                         static_cast<float>(ascentPixels - pixelHeight));
    std::sort(anchors.begin(), anchors.end());
    size.zoneFrom.clear();
    size.zoneTo.clear();
    for (const auto& [from, to] : anchors) {
        if (!size.zoneFrom.empty() && from == size.zoneFrom.back()) continue;
        // Heights never fold back: a zone below never lands above one above it.
        size.zoneFrom.push_back(from);
        size.zoneTo.push_back(size.zoneTo.empty() ? to : std::max(to, size.zoneTo.back()));
    }
}

// A font height in sub-units to pixels above the baseline, through the zones.
float MapHeight(const FontSizeCache& size, float s, float y) {
    const auto& from = size.zoneFrom;
    const auto& to = size.zoneTo;
    if (from.empty()) return y * s;
    if (y <= from.front()) return to.front() + (y - from.front()) * s;
    if (y >= from.back()) return to.back() + (y - from.back()) * s;
    size_t i = 1;
    while (from[i] < y) ++i;
    const float t = (y - from[i - 1]) / (from[i] - from[i - 1]);
    return to[i - 1] + t * (to[i] - to[i - 1]);
}

void Render(const Font& font, FontSizeCache& size, uint16_t glyphIndex, FontGlyphImage& image) {
    image.ready = true;
    const FontGlyphData& glyph = font.glyphs[glyphIndex];
    const int32_t scale = Font_Scale(font, size.pixelHeight);
    const float s = static_cast<float>(scale) / 16384.0f;
    // The stem's left edge goes to the whole pixel the text setter expects it
    // on; a second stem goes to its nearest whole pixel, the part between the
    // two stretched to match, the part right of it moved with it.
    const float stem1 = static_cast<float>(glyph.stemX) * s;
    const float shift = static_cast<float>(FontGlyph_Pixels(glyph.stemX, scale)) - stem1;
    const bool twoStems = glyph.secondStemX > glyph.stemX;
    const float stem2 = static_cast<float>(glyph.secondStemX) * s;
    const float shift2 =
        twoStems ? static_cast<float>(FontGlyph_Pixels(glyph.secondStemX, scale)) - stem2 : shift;
    auto mapX = [&](float x) {
        if (!twoStems || x <= stem1) return x + shift;
        if (x >= stem2) return x + shift2;
        return x + shift + (shift2 - shift) * (x - stem1) / (stem2 - stem1);
    };

    uint32_t count = 0;
    for (uint32_t c = 0; c < glyph.contourCount; ++c) count += font.contourSizes[glyph.firstContour + c];
    if (count == 0) return;
    std::vector<float> xs(count), ys(count);
    float minX = 1e30f, minY = 1e30f, maxX = -1e30f, maxY = -1e30f;
    for (uint32_t i = 0; i < count; ++i) {
        const FontPointData& p = font.points[glyph.firstPoint + i];
        xs[i] = mapX(static_cast<float>(p.x) * s);
        ys[i] = -MapHeight(size, s, static_cast<float>(p.y));
        minX = std::min(minX, xs[i]);
        maxX = std::max(maxX, xs[i]);
        minY = std::min(minY, ys[i]);
        maxY = std::max(maxY, ys[i]);
    }
    image.left = static_cast<int32_t>(std::floor(minX));
    image.top = static_cast<int32_t>(std::floor(minY));
    image.width = static_cast<int32_t>(std::ceil(maxX)) - image.left;
    image.height = static_cast<int32_t>(std::ceil(maxY)) - image.top;
    // No real glyph is wider than four lines or taller than two; a damaged
    // entry's stray point must not ask for a huge mask.
    const int32_t h = size.pixelHeight;
    if (image.width <= 0 || image.height <= 0 || image.width > 4 * h + 8 || image.height > 2 * h + 8) {
        image.width = image.height = 0;
        return;
    }
    const float ox = static_cast<float>(image.left);
    const float oy = static_cast<float>(image.top);

    GlyphRaster& raster = font.raster;
    GlyphRaster_Begin(raster, image.width, image.height);
    uint32_t first = 0;
    for (uint32_t c = 0; c < glyph.contourCount; ++c) {
        const uint32_t n = font.contourSizes[glyph.firstContour + c];
        if (n < 2) {
            first += n;
            continue;
        }
        auto X = [&](uint32_t k) { return xs[first + k % n] - ox; };
        auto Y = [&](uint32_t k) { return ys[first + k % n] - oy; };
        auto on = [&](uint32_t k) { return font.points[glyph.firstPoint + first + k % n].onCurve; };
        float curX = X(0), curY = Y(0), ctrlX = 0, ctrlY = 0;
        bool pending = false;
        for (uint32_t k = 1; k <= n; ++k) {
            if (on(k)) {
                if (pending)
                    GlyphRaster_Quad(raster, curX, curY, ctrlX, ctrlY, X(k), Y(k));
                else
                    GlyphRaster_Line(raster, curX, curY, X(k), Y(k));
                curX = X(k), curY = Y(k), pending = false;
            } else if (pending) {
                // Two control points in a row imply an on-curve point midway.
                const float mx = 0.5f * (ctrlX + X(k)), my = 0.5f * (ctrlY + Y(k));
                GlyphRaster_Quad(raster, curX, curY, ctrlX, ctrlY, mx, my);
                curX = mx, curY = my, ctrlX = X(k), ctrlY = Y(k);
            } else {
                ctrlX = X(k), ctrlY = Y(k), pending = true;
            }
        }
        first += n;
    }
    image.offset = static_cast<uint32_t>(size.coverage.size());
    size.coverage.resize(size.coverage.size() + static_cast<size_t>(image.width) * image.height);
    uint8_t* mask = size.coverage.data() + image.offset;
    GlyphRaster_Resolve(raster, mask, image.width);
    static const CoverageCurve curve;
    for (size_t i = 0, n = static_cast<size_t>(image.width) * image.height; i < n; ++i)
        mask[i] = curve.table[mask[i]];
}

}  // namespace

FontSizeCache& FontGlyph_Size(const Font& font, int32_t pixelHeight) {
    pixelHeight = std::clamp(pixelHeight, 1, kLargestPixelHeight);
    ++font.useCounter;
    for (FontSizeCache& size : font.cache)
        if (size.pixelHeight == pixelHeight) {
            size.lastUse = font.useCounter;
            return size;
        }
    if (font.cache.size() >= kCachedSizes) {
        auto oldest = std::min_element(font.cache.begin(), font.cache.end(),
                                       [](const auto& a, const auto& b) { return a.lastUse < b.lastUse; });
        font.cache.erase(oldest);
    }
    FontSizeCache& size = font.cache.emplace_back();
    size.pixelHeight = pixelHeight;
    size.lastUse = font.useCounter;
    size.glyphs.resize(font.glyphs.size());
    BuildZones(font, pixelHeight, size);
    return size;
}

const FontGlyphImage& FontGlyph_Image(const Font& font, FontSizeCache& size, uint16_t glyph) {
    FontGlyphImage& image = size.glyphs[glyph];
    if (!image.ready) Render(font, size, glyph, image);
    return image;
}
