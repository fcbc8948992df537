// The framebuffer's 5-6-5 rule and the blending arithmetic.
#include "ui/draw/Draw_Colour.h"
#include "ui/archive/Sqi_Decode.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

TEST(DrawColour, OneRuleWithTheIconDecoderAndAnExactRoundTrip) {
    for (uint32_t c = 0; c < 65536; ++c) {
        const Colour565 colour = static_cast<Colour565>(c);
        const uint32_t pixel = Draw_PixelFrom565(colour);
        ASSERT_EQ(pixel, Sqi_PixelFrom565(c >> 11, (c >> 5) & 63, c & 31)) << c;
        ASSERT_EQ(pixel & 0xFF070307u, 0u) << "bits below each field stay clear";
        ASSERT_EQ(Draw_565FromPixel(pixel), colour);
        ASSERT_EQ(Draw_Quantize(pixel), pixel) << "a pixel on the rule maps onto itself";
    }
    for (auto [colour, pixel] : {std::pair{0xFFFF, 0x00F8FCF8u},
                                 {0xF800, 0x00F80000u},
                                 {0x07E0, 0x0000FC00u},
                                 {0x001F, 0x000000F8u}})
        EXPECT_EQ(Draw_PixelFrom565(Colour565(colour)), pixel);
}

TEST(DrawColour, EightBitChannelsRoundToTheNearestLevel) {
    EXPECT_EQ(Draw_Rgb565(255, 255, 255), 0xFFFF);
    EXPECT_EQ(Draw_Rgb565(0, 0, 0), 0x0000);
    EXPECT_EQ(Draw_Rgb565(3, 1, 3), 0x0000);
    EXPECT_EQ(Draw_Rgb565(4, 2, 4), (1 << 11) | (1 << 5) | 1);  // halfway rounds up
    EXPECT_EQ(Draw_Rgb565(251, 0, 0), 0xF800);                  // nearest to 248, held at 31
    EXPECT_EQ(Draw_Quantize(0x00FF8001u), Draw_PixelFrom565(Draw_Rgb565(255, 128, 1)));
    EXPECT_EQ(Draw_Quantize(0xFF000000u), 0u) << "the top byte is not colour";
    // Every value of each field alone: the nearest level, up to the top one, and no other field touched.
    for (int shift : {16, 8, 0})
        for (uint32_t v = 0; v < 256; ++v) {
            const int step = shift == 8 ? 4 : 8;
            const uint32_t q = Draw_Quantize(v << shift) >> shift;
            ASSERT_EQ(Draw_Quantize(v << shift), q << shift) << v << " at " << shift;
            ASSERT_EQ(q % step, 0u) << v << " at " << shift;
            ASSERT_LE(std::abs(int(v) - int(q)), int(v) > 255 - step ? step : step / 2)
                << v << " at " << shift;
        }
}

TEST(DrawColour, BlendingIsExactAtTheEndsAndRoundsInBetween) {
    const uint32_t black = 0, white = Draw_PixelFrom565(0xFFFF);
    EXPECT_EQ(Draw_Blend(black, 0xFFFF, 0), black);
    EXPECT_EQ(Draw_Blend(black, 0xFFFF, 256), white);
    EXPECT_EQ(Draw_Blend(white, 0x0000, 256), black);
    // (31 * 128 + 0 * 128 + 128) >> 8 = 16 for red and blue, (63 * 128 + 128) >> 8 = 32 for green.
    EXPECT_EQ(Draw_565FromPixel(Draw_Blend(black, 0xFFFF, 128)), Draw_Pack565({16, 32, 16}));
    // One field at a time: red 10 over 20 at 64/256 gives (640 + 1280 + 128) >> 8 = 8.
    const uint32_t under = Draw_PixelFromFields({20, 40, 0});
    EXPECT_EQ(Draw_565FromPixel(Draw_Blend(under, Draw_Pack565({10, 0, 31}), 64)), Draw_Pack565({18, 30, 8}));
    // Blended results keep the rule whatever the pixel held in its low bits.
    EXPECT_EQ(Draw_Blend(0x00FFFFFFu, 0x0000, 1) & 0xFF070307u, 0u);
}

TEST(DrawColour, CoverageBecomesAlphaWithFullCoverageOpaque) {
    EXPECT_EQ((std::vector<uint32_t>{Draw_AlphaFromCoverage(0), Draw_AlphaFromCoverage(127),
                                     Draw_AlphaFromCoverage(128), Draw_AlphaFromCoverage(255)}),
              (std::vector<uint32_t>{0, 127, 129, 256}));
}

}  // namespace
