// Copying pixel blocks onto a surface, clipped: 32-bit pictures (decoded PNG
// files, cached widget areas) and 8-bit coverage masks (rendered glyphs)
// drawn in one colour.
#pragma once

#include "ui/draw/Draw_Colour.h"
#include "ui/draw/Draw_Surface.h"

// A block of 32-bit pixels to draw from: 0x00RRGGBB, or 0xAARRGGBB for the
// blending blit; rows pixelsPerRow apart.
struct PixelBlock {
    const uint32_t* pixels = nullptr;
    int32_t pixelsPerRow = 0;
    int32_t width = 0;
    int32_t height = 0;
};

// Copies the block with its top-left corner at (x, y), each pixel brought
// onto the 5-6-5 rule (Draw_Quantize).
void Draw_Blit(const Surface& surface, int32_t x, int32_t y, const PixelBlock& block);

// Draws the block over what is there, each pixel weighted by its own alpha
// in bits 24..31 (255 opaque).
void Draw_BlitBlend(const Surface& surface, int32_t x, int32_t y, const PixelBlock& block);

// An 8-bit coverage mask (0 none, 255 full), `maskStride` bytes per row,
// drawn in `colour` with its top-left corner at (x, y).
void Draw_BlendMask(const Surface& surface, int32_t x, int32_t y, const uint8_t* mask, int32_t maskStride,
                    int32_t width, int32_t height, Colour565 colour);
