// Blits: the destination rectangle is clipped once, then both blocks are
// walked row by row at their own strides.
#include "ui/draw/Draw_Blit.h"

#include <cstddef>

namespace {

// The part of a w x h block at (x, y) inside the clip, and where it starts in the block.
struct Span {
    DrawRect dest;
    int32_t srcX = 0;
    int32_t srcY = 0;
};

bool Clip(const Surface& s, int32_t x, int32_t y, int32_t w, int32_t h, Span* span) {
    if (w <= 0 || h <= 0) return false;
    span->dest = Draw_Intersect({x, y, w, h}, s.clip);
    if (Draw_IsEmpty(span->dest)) return false;
    span->srcX = span->dest.x - x;
    span->srcY = span->dest.y - y;
    return true;
}

}  // namespace

void Draw_Blit(const Surface& surface, int32_t x, int32_t y, const PixelBlock& block) {
    Span s;
    if (!block.pixels || !Clip(surface, x, y, block.width, block.height, &s)) return;
    for (int32_t j = 0; j < s.dest.height; ++j) {
        const uint32_t* src = block.pixels + static_cast<ptrdiff_t>(s.srcY + j) * block.pixelsPerRow + s.srcX;
        uint32_t* dst =
            surface.pixels + static_cast<ptrdiff_t>(s.dest.y + j) * surface.pixelsPerRow + s.dest.x;
        for (int32_t i = 0; i < s.dest.width; ++i) dst[i] = Draw_Quantize(src[i]);
    }
}

void Draw_BlitBlend(const Surface& surface, int32_t x, int32_t y, const PixelBlock& block) {
    Span s;
    if (!block.pixels || !Clip(surface, x, y, block.width, block.height, &s)) return;
    for (int32_t j = 0; j < s.dest.height; ++j) {
        const uint32_t* src = block.pixels + static_cast<ptrdiff_t>(s.srcY + j) * block.pixelsPerRow + s.srcX;
        uint32_t* dst =
            surface.pixels + static_cast<ptrdiff_t>(s.dest.y + j) * surface.pixelsPerRow + s.dest.x;
        for (int32_t i = 0; i < s.dest.width; ++i) {
            const uint32_t alpha = Draw_AlphaFromCoverage(src[i] >> 24);
            if (alpha == 0) continue;
            const Colour565 c = Draw_Rgb565((src[i] >> 16) & 255, (src[i] >> 8) & 255, src[i] & 255);
            dst[i] = alpha >= 256 ? Draw_PixelFrom565(c) : Draw_Blend(dst[i], c, alpha);
        }
    }
}

void Draw_BlendMask(const Surface& surface, int32_t x, int32_t y, const uint8_t* mask, int32_t maskStride,
                    int32_t width, int32_t height, Colour565 colour) {
    Span s;
    if (!mask || !Clip(surface, x, y, width, height, &s)) return;
    const uint32_t pixel = Draw_PixelFrom565(colour);
    const Fields565 fields = Draw_Fields(colour);
    for (int32_t j = 0; j < s.dest.height; ++j) {
        const uint8_t* m = mask + static_cast<ptrdiff_t>(s.srcY + j) * maskStride + s.srcX;
        uint32_t* dst =
            surface.pixels + static_cast<ptrdiff_t>(s.dest.y + j) * surface.pixelsPerRow + s.dest.x;
        for (int32_t i = 0; i < s.dest.width; ++i) {
            const uint32_t coverage = m[i];
            if (coverage == 0) continue;
            dst[i] =
                coverage == 255 ? pixel : Draw_BlendFields(dst[i], fields, Draw_AlphaFromCoverage(coverage));
        }
    }
}
