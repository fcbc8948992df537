// Blits of 32-bit pictures and coverage masks: clipping on every side, the
// 5-6-5 rule on real photographs, and blending by alpha.
#include "ui/draw/Draw_Blit.h"
#include "DrawCanvas.h"
#include "support/TestData.h"

#include <cstdlib>

namespace {

constexpr uint32_t kSentinel = 0x00123456;

TEST(DrawBlit, ClipsOnEverySideAndKeepsTheSourceAlignment) {
    // Source pixel (i, j) holds a colour made from its position.
    std::vector<uint32_t> src(size_t(9) * 6);
    for (int32_t j = 0; j < 6; ++j)
        for (int32_t i = 0; i < 8; ++i) src[size_t(j) * 9 + i] = Draw_PixelFromFields({i, j, 7});
    const PixelBlock block{src.data(), 9, 8, 6};
    for (auto [x, y] : {std::pair{-3, -2}, std::pair{7, 5}, std::pair{2, 1}, std::pair{-20, 0}}) {
        DrawCanvas c(10, 8, kSentinel);
        Draw_Blit(c.surface, x, y, block);
        for (int32_t py = 0; py < 8; ++py)
            for (int32_t px = 0; px < 10; ++px) {
                const int32_t i = px - x, j = py - y;
                const bool inside = i >= 0 && i < 8 && j >= 0 && j < 6;
                ASSERT_EQ(c.At(px, py), inside ? Draw_PixelFromFields({i, j, 7}) : kSentinel)
                    << "at " << x << "," << y << " pixel " << px << "," << py;
            }
        EXPECT_TRUE(c.PaddingIs(kSentinel));
    }
}

TEST(DrawBlit, PhotographsAreBroughtOntoTheRuleWithinHalfALevel) {
    PELLUCIDA_REQUIRE_DATA(path, "png/equimagelab_NGC6946_rgb8.png");
    std::vector<uint8_t> rgba;
    unsigned w = 0, h = 0;
    ASSERT_EQ(lodepng::decode(rgba, w, h, path, LCT_RGBA, 8), 0u);
    std::vector<uint32_t> src(size_t(w) * h);
    for (size_t i = 0; i < src.size(); ++i)
        src[i] = (uint32_t(rgba[4 * i]) << 16) | (uint32_t(rgba[4 * i + 1]) << 8) | rgba[4 * i + 2];

    DrawCanvas c(640, 480, kSentinel);
    const int32_t ox = -500, oy = -700;  // the galaxy's core lies in the middle of the picture
    Draw_Blit(c.surface, ox, oy, {src.data(), int32_t(w), int32_t(w), int32_t(h)});
    size_t nonBlack = 0;
    for (int32_t y = 0; y < 480; ++y)
        for (int32_t x = 0; x < 640; ++x) {
            const uint32_t s = src[size_t(y - oy) * w + (x - ox)];
            const uint32_t p = c.At(x, y);
            ASSERT_EQ(p, Draw_Quantize(s));
            ASSERT_EQ(p & 0xFF070307u, 0u);
            // Each field is the nearest level to the 8-bit value, up to the top level.
            for (int shift : {16, 8, 0}) {
                const int step = shift == 8 ? 4 : 8;
                const int v = int((s >> shift) & 255), q = int((p >> shift) & 255);
                ASSERT_LE(std::abs(v - q), v > 255 - step ? step : step / 2) << x << "," << y;
            }
            nonBlack += p != 0;
        }
    EXPECT_GT(nonBlack, size_t(640 * 480 / 2)) << "the crop shows the galaxy, not empty sky";
}

TEST(DrawBlit, BlendingBlitWeighsEachPixelByItsAlpha) {
    const uint32_t src[4] = {0x00FFFFFFu, 0xFFFFFFFFu, 0x80FFFFFFu, 0xFF000000u};
    DrawCanvas c(4, 1, Draw_PixelFrom565(0x0000));
    c.At(3, 0) = Draw_PixelFrom565(0xFFFF);
    Draw_BlitBlend(c.surface, 0, 0, {src, 4, 4, 1});
    EXPECT_EQ(c.At(0, 0), 0u) << "alpha 0 leaves the pixel";
    EXPECT_EQ(c.At(1, 0), Draw_PixelFrom565(0xFFFF));
    EXPECT_EQ(Draw_565FromPixel(c.At(2, 0)), Draw_Pack565({16, 32, 16})) << "alpha 128 weighs 129/256";
    EXPECT_EQ(c.At(3, 0), 0u);
}

TEST(DrawBlit, MaskDrawsItsColourByCoverageInsideTheClip) {
    const uint8_t mask[2 * 4] = {0,   255, 128, 0,  //
                                 255, 255, 64,  7};
    DrawCanvas c(4, 3, kSentinel);
    Draw_BlendMask(c.surface, 1, 1, mask, 4, 3, 2, 0xFFFF);  // the last column lies outside the width given
    EXPECT_EQ(c.At(1, 1), kSentinel);
    EXPECT_EQ(c.At(2, 1), Draw_PixelFrom565(0xFFFF));
    EXPECT_NE(c.At(3, 1), kSentinel);
    EXPECT_EQ(c.At(1, 2), Draw_PixelFrom565(0xFFFF));
    EXPECT_EQ(c.At(3, 2), Draw_Blend(kSentinel, 0xFFFF, 64));
    EXPECT_EQ(c.At(0, 1), kSentinel);
    for (int32_t x = 0; x < 4; ++x) EXPECT_EQ(c.At(x, 0), kSentinel);
}

}  // namespace
