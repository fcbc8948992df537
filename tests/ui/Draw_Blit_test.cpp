// Blits of 32-bit pictures: clipping on every side, the 5-6-5 rule applied to
// what is copied, and blending by alpha. (Coverage masks are the glyphs of
// text: their clipping is checked in Font_Text_test, their blending by the
// font specimen's golden picture.)
#include "ui/draw/Draw_Blit.h"
#include "DrawCanvas.h"

namespace {

constexpr uint32_t kSentinel = 0x00123456;

TEST(DrawBlit, ClipsOnEverySideAndKeepsTheSourceAlignment) {
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

}  // namespace
