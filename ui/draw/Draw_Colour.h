// The toolkit's colour rule. Toolkit colours are 16-bit 5-6-5 values; the
// framebuffer holds 32-bit 0x00RRGGBB words whose colour is kept to 5-6-5
// precision. One exact rule maps between them, the same one the icon decoder
// uses: each field sits in the top bits of its byte and the bits below are 0,
//
//     pixel = (r5 << 19) | (g6 << 10) | (b5 << 3)
//
// so a pixel reads back into 5-6-5 form by shifting the fields out again, and
// every pixel this layer writes is a fixed point of that round trip.
#pragma once

#include <cstdint>

using Colour565 = uint16_t;

struct Fields565 {
    int32_t r = 0;  // 0..31
    int32_t g = 0;  // 0..63
    int32_t b = 0;  // 0..31
};

constexpr Fields565 Draw_Fields(Colour565 c) {
    return {c >> 11, (c >> 5) & 63, c & 31};
}

constexpr Colour565 Draw_Pack565(Fields565 f) {
    return static_cast<Colour565>((f.r << 11) | (f.g << 5) | f.b);
}

constexpr uint32_t Draw_PixelFromFields(Fields565 f) {
    return (static_cast<uint32_t>(f.r) << 19) | (static_cast<uint32_t>(f.g) << 10) |
           (static_cast<uint32_t>(f.b) << 3);
}

constexpr uint32_t Draw_PixelFrom565(Colour565 c) {
    return Draw_PixelFromFields(Draw_Fields(c));
}

constexpr Fields565 Draw_FieldsOfPixel(uint32_t pixel) {
    return {static_cast<int32_t>((pixel >> 19) & 31), static_cast<int32_t>((pixel >> 10) & 63),
            static_cast<int32_t>((pixel >> 3) & 31)};
}

constexpr Colour565 Draw_565FromPixel(uint32_t pixel) {
    return Draw_Pack565(Draw_FieldsOfPixel(pixel));
}

// 8-bit channels to 5-6-5 by nearest representable level: the levels of a
// 5-bit field are multiples of 8 (of 4 for green), so v rounds to (v + 4) >> 3,
// held at 31. A pixel that already obeys the rule maps onto itself.
constexpr Colour565 Draw_Rgb565(uint32_t r, uint32_t g, uint32_t b) {
    const uint32_t r5 = (r + 4) >> 3;
    const uint32_t g6 = (g + 2) >> 2;
    const uint32_t b5 = (b + 4) >> 3;
    return static_cast<Colour565>(((r5 > 31 ? 31 : r5) << 11) | ((g6 > 63 ? 63 : g6) << 5) |
                                  (b5 > 31 ? 31 : b5));
}

// Any 0x00RRGGBB word (a decoded PNG, say) brought onto the rule.
constexpr uint32_t Draw_Quantize(uint32_t rgb) {
    return Draw_PixelFrom565(Draw_Rgb565((rgb >> 16) & 255, (rgb >> 8) & 255, rgb & 255));
}

// Blending of a colour over a pixel with coverage `alpha` in 0..256 (256 is
// opaque), field by field in 5-6-5 with rounding to nearest:
//
//     field = (colour * alpha + pixel * (256 - alpha) + 128) >> 8
//
// alpha 0 leaves the pixel, 256 gives the colour exactly, and the result is a
// 5-6-5 colour again, so blended pixels keep the framebuffer rule.
constexpr uint32_t Draw_BlendFields(uint32_t pixel, Fields565 c, uint32_t alpha) {
    const Fields565 p = Draw_FieldsOfPixel(pixel);
    const int32_t a = static_cast<int32_t>(alpha);
    const int32_t na = 256 - a;
    return Draw_PixelFromFields(
        {(c.r * a + p.r * na + 128) >> 8, (c.g * a + p.g * na + 128) >> 8, (c.b * a + p.b * na + 128) >> 8});
}

constexpr uint32_t Draw_Blend(uint32_t pixel, Colour565 colour, uint32_t alpha) {
    return Draw_BlendFields(pixel, Draw_Fields(colour), alpha);
}

// An 8-bit coverage (0..255) as a blending alpha (0..256): 255 becomes opaque.
constexpr uint32_t Draw_AlphaFromCoverage(uint32_t coverage) {
    return coverage + (coverage >> 7);
}
