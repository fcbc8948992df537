// The .sqi decoder: placement by fill mode, the power-of-two decode buffer,
// the quadtree rules for inert and zero-sized nodes, resampling and the pixel
// operations of direct and tinted icons.
#include "SqiBits.h"
#include "ui/WidgetKinds.h"
#include "ui/archive/Sqi_Decode.h"

#include <gtest/gtest.h>

namespace {

using sqi_test::BitWriter;

// The strongest coverage, 255 of 256, leaves a field at (v * 255) >> 8 over black.
uint32_t Covered(uint32_t v) {
    return (v * 255) >> 8;
}

struct Canvas {
    uint32_t width, height;
    std::vector<uint32_t> pixels;
    Canvas(uint32_t w, uint32_t h, uint32_t fill = 0) : width(w), height(h), pixels(size_t(w) * h, fill) {}
    SqiTarget Target(int32_t x, int32_t y, int32_t w, int32_t h, uint32_t mode = kFillStretch) {
        SqiTarget t;
        t.pixels = pixels.data();
        t.pixelsPerRow = width;
        t.framebufferWidth = width;
        t.framebufferHeight = height;
        t.x = x;
        t.y = y;
        t.width = w;
        t.height = h;
        t.fillMode = mode;
        return t;
    }
    uint32_t At(uint32_t x, uint32_t y) const { return pixels[size_t(y) * width + x]; }
};

// Placement by fill mode: the destination, its offset in the widget and the
// power-of-two buffer it is decoded in; nothing below one pixel.
TEST(SqiPlacement, FillModesScaleCentreAndRoundTheBufferUp) {
    struct Case {
        uint32_t w, h;
        int32_t widgetW, widgetH;
        uint32_t mode;
        bool placed;
        int32_t destW, destH, offsetX, offsetY;
        uint32_t bufferW, bufferH;
    };
    const Case cases[] = {
        {16, 16, 100, 60, kFillStretch, true, 100, 60, 0, 0, 128, 64},  // whatever the header says
        {500, 20, 100, 60, kFillStretch, true, 100, 60, 0, 0, 128, 64},
        {1, 1, 100, 60, kFillStretch, true, 100, 60, 0, 0, 128, 64},
        {10, 10, 100, 50, kFillAutoFit, true, 50, 50, 25, 0, 64, 64},
        {10, 10, 100, 50, kFillAutoFillOut, true, 100, 100, 0, -25, 128, 128},
        {10, 10, 100, 50, kFillNative, true, 10, 10, 45, 20, 16, 16},
        {1, 1, 1, 1, kFillAutoFit, true, 1, 1, 0, 0, 1, 1},
        {10, 10, 0, 50, kFillStretch, false, 0, 0, 0, 0, 0, 0},
        {10, 10, 50, 0, kFillAutoFit, false, 0, 0, 0, 0, 0, 0},
        {1000, 1, 10, 10, kFillAutoFit, false, 0, 0, 0, 0, 0, 0},  // 10 x 0.01 pixels
        {0, 10, 10, 10, kFillAutoFit, false, 0, 0, 0, 0, 0, 0},
    };
    for (const Case& c : cases) {
        SqiPlacement p;
        ASSERT_EQ(Sqi_Place(c.w, c.h, c.widgetW, c.widgetH, c.mode, &p), c.placed) << c.w << "x" << c.h;
        if (!c.placed) continue;
        EXPECT_EQ(std::vector<int64_t>(
                      {p.destWidth, p.destHeight, p.offsetX, p.offsetY, p.bufferWidth, p.bufferHeight}),
                  std::vector<int64_t>({c.destW, c.destH, c.offsetX, c.offsetY, c.bufferW, c.bufferH}))
            << c.w << "x" << c.h << " mode " << c.mode;
    }
}

// The quadtree rules, one plane decoded into a small buffer: the bits used
// and the values. A one-pixel node that splits keeps its own value and its
// children are read but inert; zero-sized children draw nothing; a stream
// that ends early reads as zeros.
TEST(SqiTree, NodesSplitFillAndStopByTheRules) {
    struct Case {
        const char* nodes;
        uint32_t w, h;
        uint64_t bitsUsed;
        std::vector<uint8_t> expected;
    };
    const Case cases[] = {
        // The root of one pixel splits; an inert child splits again; L30 lies after the tree.
        {"S21 S3 L7 L7 L7 L7 L9 L9 L9 L30", 1, 1, 9 * 6, {21}},
        {"S0 L5 L6 L7 L8", 2, 1, 5 * 6, {7, 8}},  // the upper children have height 0
        {"S0 S17 S29 L30 L30 L30 L30 L31 L31 L31 L2 L3 L4", 2, 2, 13 * 6, {17, 2, 3, 4}},
        {"S9", 2, 2, 30, {0, 0, 0, 0}},
    };
    for (const Case& c : cases) {
        const sqi_test::BitWriter s = sqi_test::Nodes(c.nodes, 5);
        std::vector<uint8_t> buffer(c.w * c.h, 0xEE);
        EXPECT_EQ(Sqi_DecodePlane(s.bytes.data(), s.bytes.size(), 5, c.w, c.h, buffer.data()), c.bitsUsed)
            << c.nodes;
        EXPECT_EQ(buffer, c.expected) << c.nodes;
    }
    // The root's quadrants land in the quarters of a stretched 128 x 64 buffer.
    const sqi_test::BitWriter s = sqi_test::Nodes("S0 L1 L2 L3 L4", 5);
    std::vector<uint8_t> buffer(128 * 64, 0xEE);
    Sqi_DecodePlane(s.bytes.data(), s.bytes.size(), 5, 128, 64, buffer.data());
    for (auto [at, value] :
         {std::pair{0, 1}, {63, 1}, {64, 2}, {31 * 128 + 127, 2}, {32 * 128, 3}, {63 * 128 + 127, 4}})
        EXPECT_EQ(buffer[size_t(at)], value) << at;
}

TEST(SqiResample, AveragesSixteenSamples) {
    // A 2 x 1 image with 0 and 31 in red, shown 1 x 1: half the samples of
    // each axis fall on each side.
    BitWriter planes[4];
    planes[0].Split(0, 5);
    planes[0].Leaf(0, 5);
    planes[0].Leaf(0, 5);
    planes[0].Leaf(0, 5);
    planes[0].Leaf(31, 5);
    planes[1].Leaf(0, 6);
    planes[2].Leaf(0, 5);
    planes[3].Leaf(255, 8);
    // Shown 2 x 1 the buffer is 2 x 1 and the root's lower children are the pixels.
    Canvas canvas(2, 1);
    const auto file = sqi_test::File(2, 1, 0, planes);
    ASSERT_TRUE(Sqi_Draw(file.data(), file.size(), canvas.Target(0, 0, 2, 1)));
    EXPECT_EQ(canvas.At(0, 0) >> 19, 0u);
    EXPECT_EQ(canvas.At(1, 0) >> 19, Covered(31));

    // Four quadrants 31, 0, 0, 16: shown 2 x 2 each is one pixel.
    BitWriter red;
    red.Split(0, 5);
    red.Leaf(31, 5);
    red.Leaf(0, 5);
    red.Leaf(0, 5);
    red.Leaf(16, 5);
    planes[0] = red;
    Canvas small(2, 2);
    const auto file2 = sqi_test::File(4, 4, 0, planes);
    ASSERT_TRUE(Sqi_Draw(file2.data(), file2.size(), small.Target(0, 0, 2, 2)));
    EXPECT_EQ(small.At(0, 0) >> 19, Covered(31));
    EXPECT_EQ(small.At(1, 0) >> 19, 0u);
    EXPECT_EQ(small.At(1, 1) >> 19, Covered(16));
    // Shown 3 x 3 the buffer is 4 x 4 with 2 x 2 quadrants; the step is 4/3
    // and pixel (1, 1) samples 1, 1.33, 1.67, 2 on each axis: 3 x 3 of its 16
    // samples lie in the top-left quadrant, 1 in the bottom-right one.
    Canvas three(3, 3);
    ASSERT_TRUE(Sqi_Draw(file2.data(), file2.size(), three.Target(0, 0, 3, 3)));
    EXPECT_EQ(three.At(1, 1) >> 19, Covered((9u * 31u + 1u * 16u) >> 4));
}

TEST(SqiPixels, DirectColourReplacesFieldsAndBlendsCoverage) {
    Canvas canvas(4, 4, Sqi_PixelFrom565(0, 0, 31));
    const auto opaque = sqi_test::Uniform(4, 4, 0, 31, 10, 0, 255);
    ASSERT_TRUE(Sqi_Draw(opaque.data(), opaque.size(), canvas.Target(0, 0, 2, 4)));
    // Coverage 255 of 256 leaves a trace of the background's blue.
    EXPECT_EQ(canvas.At(0, 0), Sqi_PixelFrom565((31 * 255) >> 8, (10 * 255) >> 8, (31 * 1) >> 8));
    EXPECT_EQ(canvas.At(2, 0), Sqi_PixelFrom565(0, 0, 31));

    Canvas half(1, 1, Sqi_PixelFrom565(0, 0, 31));
    const auto translucent = sqi_test::Uniform(4, 4, 0, 31, 0, 0, 128);
    ASSERT_TRUE(Sqi_Draw(translucent.data(), translucent.size(), half.Target(0, 0, 1, 1)));
    EXPECT_EQ(half.At(0, 0), Sqi_PixelFrom565(15, 0, 15));

    Canvas clear(1, 1, Sqi_PixelFrom565(3, 4, 5));
    const auto invisible = sqi_test::Uniform(4, 4, 0, 31, 63, 31, 0);
    ASSERT_TRUE(Sqi_Draw(invisible.data(), invisible.size(), clear.Target(0, 0, 1, 1)));
    EXPECT_EQ(clear.At(0, 0), Sqi_PixelFrom565(3, 4, 5));
}

TEST(SqiPixels, TintedModeScalesTheTintsAndAddsWithoutClamping) {
    Canvas canvas(1, 1);
    SqiTarget t = canvas.Target(0, 0, 1, 1);
    t.tint[0] = 0xF800;  // red 31
    t.tint[1] = 0x07E0;  // green 63
    t.tint[2] = 0x001F;  // blue 31
    const auto file = sqi_test::Uniform(8, 8, kSqiModeTinted, 31, 32, 16, 255);
    ASSERT_TRUE(Sqi_Draw(file.data(), file.size(), t));
    // s = value << (8 - bits): 248, 128, 128.
    const uint32_t r = 31 * 248 / 256, g = 63 * 128 / 256, b = 31 * 128 / 256;
    EXPECT_EQ(canvas.At(0, 0), Sqi_PixelFrom565((r * 255) >> 8, (g * 255) >> 8, (b * 255) >> 8));

    // Two full tints of white overflow the red field into the bits above it:
    // 30 + 30 = 60 red does not fit 5 bits and the 5-6-5 word keeps 60 & 31.
    Canvas over(1, 1);
    SqiTarget o = over.Target(0, 0, 1, 1);
    o.tint[0] = 0xF800;
    o.tint[1] = 0xF800;
    const auto both = sqi_test::Uniform(8, 8, kSqiModeTinted, 31, 63, 0, 255);
    ASSERT_TRUE(Sqi_Draw(both.data(), both.size(), o));
    const uint32_t sum = 31 * 248 / 256 + 31 * 252 / 256;
    EXPECT_EQ(sum, 60u);
    EXPECT_EQ(over.At(0, 0), Sqi_PixelFrom565(((sum & 31) * 255) >> 8, 0, 0));
}

TEST(SqiDraw, ClipsToWidgetAndFramebuffer) {
    Canvas canvas(4, 4, 0);
    const auto file = sqi_test::Uniform(4, 4, 0, 31, 0, 0, 255);
    // A widget hanging off the bottom-right corner.
    ASSERT_TRUE(Sqi_Draw(file.data(), file.size(), canvas.Target(2, 2, 8, 8)));
    EXPECT_EQ(canvas.At(1, 1), 0u);
    EXPECT_NE(canvas.At(3, 3), 0u);
    // AutoFillOut overhangs the widget and is cut at its edges.
    Canvas wide(10, 10, 0);
    ASSERT_TRUE(Sqi_Draw(file.data(), file.size(), wide.Target(2, 4, 6, 2, kFillAutoFillOut)));
    EXPECT_EQ(wide.At(2, 3), 0u);
    EXPECT_NE(wide.At(2, 4), 0u);
    EXPECT_NE(wide.At(7, 5), 0u);
    EXPECT_EQ(wide.At(7, 6), 0u);
    EXPECT_EQ(wide.At(8, 5), 0u);
}

TEST(SqiDraw, ShortOrEmptyFilesAreRefusedOrDrawnSafely) {
    Canvas canvas(4, 4, 0);
    const uint8_t header[4] = {1, 0, 1, 0};
    EXPECT_FALSE(Sqi_Draw(header, sizeof header, canvas.Target(0, 0, 4, 4)));
    // A header with no planes: every plane reads as zeros, coverage 0.
    const uint8_t bare[8] = {4, 0, 4, 0, 0, 0, 0, 0};
    Canvas keep(4, 4, Sqi_PixelFrom565(1, 2, 3));
    EXPECT_TRUE(Sqi_Draw(bare, sizeof bare, keep.Target(0, 0, 4, 4)));
    EXPECT_EQ(keep.At(2, 2), Sqi_PixelFrom565(1, 2, 3));
}

}  // namespace
