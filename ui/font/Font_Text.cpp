// Setting a line of text: UTF-8 decoding, glyph lookup, kerning and the pen's
// advance, shared by measuring and drawing so both agree exactly.
#include "ui/font/Font.h"

#include "ui/draw/Draw_Blit.h"
#include "ui/font/Font_Format.h"
#include "ui/font/Font_Glyph.h"
#include "ui/font/Utf8.h"

#include <algorithm>

namespace {

// Lengths in sub-units as 1/64 pixel at `scale`, rounded to nearest.
int32_t Sixtyfourths(int32_t subUnits, int32_t scale) {
    return static_cast<int32_t>((int64_t{subUnits} * scale + 128) >> 8);
}

// Calls place(glyph, x) for each glyph of the line, x being where the glyph's
// origin goes in whole pixels, and returns the advance width. The pen is 64-bit
// so that no entry, however damaged, can overflow it. The pen keeps
// 1/64 pixel so that spacing does not drift; each glyph lands on the whole
// pixel nearest its place, judged by its stem when it has one, since the
// renderer put that stem on a pixel boundary.
template <class Place>
int32_t SetLine(const Font& font, int32_t scale, std::string_view utf8, Place place) {
    const int32_t spacing = font.letterSpacing * kFontSubUnits;
    int64_t pen = 0;
    int32_t previous = -1;
    for (size_t at = 0; at < utf8.size();) {
        const uint32_t cp = Utf8_Next(utf8, &at);
        if (cp < 32 || cp == 127) continue;
        const uint16_t glyph = Font_GlyphFor(font, cp);
        const FontGlyphData& data = font.glyphs[glyph];
        if (previous >= 0)
            pen += Sixtyfourths(Font_Kerning(font, static_cast<uint16_t>(previous), glyph), scale);
        const int64_t stem = Sixtyfourths(data.stemX, scale);
        place(glyph, ((pen + stem + 32) >> 6) - FontGlyph_Pixels(data.stemX, scale));
        pen += Sixtyfourths(data.advance + spacing, scale);
        previous = glyph;
    }
    return static_cast<int32_t>(std::clamp<int64_t>((pen + 32) >> 6, INT32_MIN, INT32_MAX));
}

}  // namespace

TextMetrics Font_MeasureText(const Font& font, int32_t pixelHeight, std::string_view utf8) {
    TextMetrics m;
    if (font.glyphs.empty() || pixelHeight <= 0) return m;
    const int32_t height = FontGlyph_Size(font, pixelHeight).pixelHeight;
    const int32_t scale = Font_Scale(font, height);
    m.ascent = FontGlyph_Pixels(font.ascent, scale);
    m.descent = height - m.ascent;
    m.width = SetLine(font, scale, utf8, [](uint16_t, int64_t) {});
    return m;
}

int32_t Font_DrawText(const Surface& surface, const Font& font, int32_t x, int32_t baselineY,
                      int32_t pixelHeight, std::string_view utf8, Colour565 colour) {
    if (font.glyphs.empty() || pixelHeight <= 0) return 0;
    FontSizeCache& size = FontGlyph_Size(font, pixelHeight);
    const int32_t scale = Font_Scale(font, size.pixelHeight);
    const DrawRect& clip = surface.clip;
    return SetLine(font, scale, utf8, [&](uint16_t glyph, int64_t pen) {
        const int64_t gx = x + pen;
        const int64_t gy = baselineY;
        // Glyphs wholly outside the clip are neither rendered nor drawn.
        if (gx > int64_t{clip.x} + clip.width + 4 * pixelHeight || gx < int64_t{clip.x} - 8 * pixelHeight)
            return;
        const FontGlyphImage& image = FontGlyph_Image(font, size, glyph);
        if (image.width == 0) return;
        const int64_t left = gx + image.left, top = gy + image.top;
        if (left >= int64_t{clip.x} + clip.width || top >= int64_t{clip.y} + clip.height ||
            left + image.width <= clip.x || top + image.height <= clip.y)
            return;
        Draw_BlendMask(surface, static_cast<int32_t>(left), static_cast<int32_t>(top),
                       size.coverage.data() + image.offset, image.width, image.width, image.height, colour);
    });
}
