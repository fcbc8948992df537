// The painter, pixel by pixel: the framebuffer's 5-6-5 rule and the blending
// arithmetic; flat fills, outlines, gradients and the clip rectangle; blits of
// 32-bit pictures, clipped on every side, brought onto the 5-6-5 rule and
// blended by alpha; anti-aliased shapes at their limits, rounded rectangles
// with no radius or a radius held to a disc, and clipping of lines and
// circles whatever their coordinates.
// (Plain fills, one-pixel outlines and blended rectangles also show in the
// toolkit's golden pictures. Coverage masks are the glyphs of text: their
// clipping is checked in Font_test, their blending by the font specimen's
// golden picture. Crisp edges, symmetric corners, areas, gradients and
// one-pixel outlines are pinned pixel for pixel by the golden picture of the
// painter's shapes.)
#include "DrawCanvas.h"
#include "ui/archive/Sqi_Decode.h"
#include "ui/draw/Draw_Blit.h"
#include "ui/draw/Draw_Rect.h"
#include "ui/draw/Draw_RoundRect.h"
#include "ui/draw/Draw_Shapes.h"

#include <cmath>
#include <cstdlib>

namespace {

constexpr Colour565 kRed = 0xF800;
constexpr Colour565 kBlue = 0x001F;
constexpr Colour565 kWhite = 0xFFFF;
const uint32_t kWhitePixel = Draw_PixelFrom565(kWhite);
constexpr uint32_t kSentinel = 0x00123456;  // off the rule: shows any pixel that was written

TEST(DrawColour, OneRuleWithTheIconDecoderAnExactRoundTripAndEightBitChannelsRounded) {
    for (uint32_t c = 0; c < 65536; ++c) {
        const Colour565 colour = static_cast<Colour565>(c);
        const uint32_t pixel = Draw_PixelFrom565(colour);
        ASSERT_EQ(pixel, Sqi_PixelFrom565(c >> 11, (c >> 5) & 63, c & 31)) << c;
        ASSERT_EQ(pixel & 0xFF070307u, 0u) << "bits below each field stay clear";
        ASSERT_EQ(Draw_565FromPixel(pixel), colour);
        ASSERT_EQ(Draw_Quantize(pixel), pixel) << "a pixel on the rule maps onto itself";
    }
    const std::pair<Colour565, uint32_t> pixels[] = {
        {0xFFFF, 0x00F8FCF8u}, {0xF800, 0x00F80000u}, {0x07E0, 0x0000FC00u}, {0x001F, 0x000000F8u}};
    for (auto [colour, pixel] : pixels) EXPECT_EQ(Draw_PixelFrom565(colour), pixel);
    // Eight-bit channels round to the nearest level.
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

TEST(DrawColour, BlendingIsExactAtTheEndsAndRoundsInBetweenAndFullCoverageIsOpaque) {
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
    // Coverage becomes alpha, full coverage opaque.
    EXPECT_EQ((std::vector<uint32_t>{Draw_AlphaFromCoverage(0), Draw_AlphaFromCoverage(127),
                                     Draw_AlphaFromCoverage(128), Draw_AlphaFromCoverage(255)}),
              (std::vector<uint32_t>{0, 127, 129, 256}));
}

TEST(DrawRect, FillsAreClippedToTheSurfaceAndTheClipAndEmptyOnesDrawNothing) {
    DrawCanvas c(16, 16, kSentinel);
    Draw_FillRect(c.surface, {-100, -100, 1000, 1000}, kBlue);
    EXPECT_TRUE(c.PaddingIs(kSentinel)) << "rows end at the surface's width, not its stride";
    EXPECT_EQ(c.At(15, 15), Draw_PixelFrom565(kBlue));

    DrawCanvas d(16, 16, kSentinel);
    {
        ClipScope scope(d.surface, {4, 4, 4, 4});
        {
            ClipScope inner(d.surface, {6, 0, 10, 16});  // narrows, never widens
            EXPECT_EQ(std::pair(d.surface.clip.x, d.surface.clip.width), std::pair(6, 2));
            Draw_FillRect(d.surface, {0, 0, 16, 16}, kRed);
        }
        EXPECT_EQ(std::pair(d.surface.clip.x, d.surface.clip.width), std::pair(4, 4));
    }
    EXPECT_EQ(d.surface.clip.width, 16) << "the scope restores the whole surface";
    DrawTest_ExpectPixels(d, [](int32_t x, int32_t y) {
        return DrawTest_Inside({6, 4, 2, 4}, x, y) ? Draw_PixelFrom565(kRed) : kSentinel;
    });
    // Empty and huge rectangles draw nothing or stay inside.
    DrawCanvas e(8, 8, kSentinel);
    Draw_FillRect(e.surface, {2, 2, 0, 5}, kRed);
    Draw_FillRect(e.surface, {2, 2, 5, -3}, kRed);
    Draw_FillRect(e.surface, {INT32_MAX - 2, 0, 100, 8}, kRed);
    Draw_FillRect(e.surface, {8, 0, 4, 4}, kRed);
    for (uint32_t p : e.pixels) ASSERT_EQ(p, kSentinel);
    Surface none = Draw_MakeSurface(nullptr, 0, 10, 10);
    Draw_FillRect(none, {0, 0, 10, 10}, kRed);  // a surface without pixels is empty
    EXPECT_EQ(none.width, 0);
}

TEST(DrawRect, StrokeDrawsTheBorderInsideAndGradientsRunInRoundedSteps) {
    DrawCanvas c(10, 8, kSentinel);
    Draw_StrokeRect(c.surface, {1, 1, 8, 6}, 2, kRed);
    DrawTest_ExpectPixels(c, [](int32_t x, int32_t y) {
        const bool border = DrawTest_Inside({1, 1, 8, 6}, x, y) && !DrawTest_Inside({3, 3, 4, 2}, x, y);
        return border ? Draw_PixelFrom565(kRed) : kSentinel;
    });
    DrawCanvas thick(6, 6, kSentinel);
    Draw_StrokeRect(thick.surface, {0, 0, 6, 6}, 9, kRed);  // thicker than half: a full fill
    for (uint32_t p : thick.pixels) EXPECT_TRUE(p == kSentinel || p == Draw_PixelFrom565(kRed)) << p;
    EXPECT_EQ(thick.At(3, 3), Draw_PixelFrom565(kRed));
    // A gradient runs from the top row to the bottom row in rounded steps.
    DrawCanvas g(3, 32);
    Draw_FillVerticalGradient(g.surface, {0, 0, 3, 32}, 0x0000, 0xF800);
    for (int32_t y = 0; y < 32; ++y) {
        // Red 0 to 31 over 31 steps: row y has red y exactly.
        EXPECT_EQ(g.At(0, y), Draw_PixelFromFields({y, 0, 0}));
        EXPECT_EQ(g.At(2, y), g.At(0, y));
    }
    EXPECT_EQ(Draw_GradientAt(0x0000, 0xF800, 1, 3), Draw_Pack565({16, 0, 0})) << "15.5 rounds up";
    EXPECT_EQ(Draw_GradientAt(0x1234, 0xFFFF, 0, 1), 0x1234) << "a single row takes the top colour";

    DrawCanvas clipped(3, 32);
    ClipScope scope(clipped.surface, {0, 10, 3, 5});
    Draw_FillVerticalGradient(clipped.surface, {0, 0, 3, 32}, 0x0000, 0xF800);
    EXPECT_EQ(clipped.At(1, 12), g.At(1, 12)) << "clipping does not restart the gradient";
    EXPECT_EQ(clipped.At(1, 9), 0u);
}

TEST(DrawBlit, ClipsOnEverySideKeepsTheSourceAlignmentAndBlendsByAlpha) {
    // Source pixel (i, j) holds a colour made from its position, off the 5-6-5
    // rule: the copy brings it onto the rule (the rounding itself is Draw_Quantize's test).
    auto source = [](int32_t i, int32_t j) { return Draw_PixelFromFields({i, j, 7}) + 0x00050206u; };
    std::vector<uint32_t> src(size_t(9) * 6);
    for (int32_t j = 0; j < 6; ++j)
        for (int32_t i = 0; i < 8; ++i) src[size_t(j) * 9 + i] = source(i, j);
    const PixelBlock block{src.data(), 9, 8, 6};
    for (auto [x, y] : {std::pair{-3, -2}, std::pair{7, 5}, std::pair{2, 1}, std::pair{-20, 0}}) {
        DrawCanvas c(10, 8, kSentinel);
        Draw_Blit(c.surface, x, y, block);
        SCOPED_TRACE(testing::Message() << "blit at " << x << "," << y);
        DrawTest_ExpectPixels(c, [&](int32_t px, int32_t py) {
            return DrawTest_Inside({x, y, 8, 6}, px, py) ? Draw_Quantize(source(px - x, py - y)) : kSentinel;
        });
        EXPECT_TRUE(c.PaddingIs(kSentinel));
    }
    // The blending blit weighs each pixel by its alpha.
    const uint32_t alphas[4] = {0x00FFFFFFu, 0xFFFFFFFFu, 0x80FFFFFFu, 0xFF000000u};
    DrawCanvas c(4, 1, Draw_PixelFrom565(0x0000));
    c.At(3, 0) = Draw_PixelFrom565(0xFFFF);
    Draw_BlitBlend(c.surface, 0, 0, {alphas, 4, 4, 1});
    EXPECT_EQ(c.At(0, 0), 0u) << "alpha 0 leaves the pixel";
    EXPECT_EQ(c.At(1, 0), Draw_PixelFrom565(0xFFFF));
    EXPECT_EQ(Draw_565FromPixel(c.At(2, 0)), Draw_Pack565({16, 32, 16})) << "alpha 128 weighs 129/256";
    EXPECT_EQ(c.At(3, 0), 0u);
}

// Red field of a white-on-black drawing: 0 (untouched) to 31 (full).
int32_t Level(const DrawCanvas& c, int32_t x, int32_t y) {
    return Draw_FieldsOfPixel(c.At(x, y)).r;
}

TEST(DrawShapes, RoundedRectanglesAtTheirLimitsAndEveryShapeClipped) {
    DrawCanvas a(14, 10), b(14, 10);
    Draw_FillRoundRect(a.surface, {1, 2, 9, 5}, 0.0f, kWhite);
    Draw_FillRect(b.surface, {1, 2, 9, 5}, kWhite);
    EXPECT_EQ(a.pixels, b.pixels);
    Draw_StrokeRoundRect(a.surface, {1, 1, 12, 8}, 0.0f, 2.0f, 0xF800);
    Draw_StrokeRect(b.surface, {1, 1, 12, 8}, 2, 0xF800);
    EXPECT_EQ(a.pixels, b.pixels);

    DrawCanvas disc(21, 21);
    Draw_FillRoundRect(disc.surface, {0, 0, 21, 21}, 100.0f, kWhite);  // held to 10.5
    EXPECT_EQ(disc.At(10, 0), kWhitePixel) << "the top of the disc touches the top edge";
    EXPECT_EQ(disc.At(0, 0), 0u);
    EXPECT_EQ(disc.At(10, 10), kWhitePixel);
    int64_t sum = 0;
    for (int32_t y = 0; y < 21; ++y)
        for (int32_t x = 0; x < 21; ++x) sum += Level(disc, x, y);
    EXPECT_NEAR(double(sum) / 31.0, 3.14159265 * 10.5 * 10.5, 3.0) << "the area of a circle of radius 10.5";
    // Clipping cuts rounded rectangles without changing what is drawn.
    DrawCanvas whole(40, 30), part(40, 30);
    Draw_FillRoundRect(whole.surface, {3, 3, 34, 24}, 9.0f, kWhite);
    Draw_StrokeRoundRect(whole.surface, {3, 3, 34, 24}, 9.0f, 2.5f, 0xF800);
    {
        ClipScope scope(part.surface, {0, 0, 12, 11});
        Draw_FillRoundRect(part.surface, {3, 3, 34, 24}, 9.0f, kWhite);
        Draw_StrokeRoundRect(part.surface, {3, 3, 34, 24}, 9.0f, 2.5f, 0xF800);
    }
    DrawTest_ExpectPixels(part, [&](int32_t x, int32_t y) { return x < 12 && y < 11 ? whole.At(x, y) : 0u; });
    EXPECT_TRUE(part.PaddingIs(0));
    // Lines and circles stay inside the clip whatever their coordinates.
    DrawCanvas c(40, 40);
    {
        ClipScope scope(c.surface, {10, 10, 10, 10});
        Draw_Line(c.surface, -100.0f, -50.0f, 140.0f, 90.0f, 5.0f, kWhite);
        Draw_FillCircle(c.surface, 20.0f, 20.0f, 30.0f, kWhite);
        Draw_StrokeCircle(c.surface, 10.0f, 10.0f, 8.0f, 3.0f, kWhite);
        Draw_Line(c.surface, NAN, 0.0f, 5.0f, 5.0f, 1.0f, kWhite);  // nonsense draws nothing, safely
    }
    DrawTest_ExpectPixels(c, [&](int32_t x, int32_t y) {
        return DrawTest_Inside({10, 10, 10, 10}, x, y) ? c.At(x, y) : 0u;
    });
    EXPECT_EQ(c.At(15, 15), Draw_PixelFrom565(kWhite));
}

}  // namespace
