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

TEST(SqiPlacement, StretchAt100x60DecodesIn128x64WhateverTheHeader) {
    for (auto [w, h] : {std::pair{16u, 16u}, std::pair{500u, 20u}, std::pair{1u, 1u}}) {
        SqiPlacement p;
        ASSERT_TRUE(Sqi_Place(w, h, 100, 60, kFillStretch, &p));
        EXPECT_EQ(p.destWidth, 100);
        EXPECT_EQ(p.destHeight, 60);
        EXPECT_EQ(p.offsetX, 0);
        EXPECT_EQ(p.offsetY, 0);
        EXPECT_EQ(p.bufferWidth, 128u);
        EXPECT_EQ(p.bufferHeight, 64u);
    }
}

TEST(SqiPlacement, FillModesScaleAndCentre) {
    SqiPlacement p;
    ASSERT_TRUE(Sqi_Place(10, 10, 100, 50, kFillAutoFit, &p));
    EXPECT_EQ(p.destWidth, 50);
    EXPECT_EQ(p.destHeight, 50);
    EXPECT_EQ(p.offsetX, 25);
    EXPECT_EQ(p.offsetY, 0);
    EXPECT_EQ(p.bufferWidth, 64u);
    ASSERT_TRUE(Sqi_Place(10, 10, 100, 50, kFillAutoFillOut, &p));
    EXPECT_EQ(p.destWidth, 100);
    EXPECT_EQ(p.destHeight, 100);
    EXPECT_EQ(p.offsetY, -25);
    ASSERT_TRUE(Sqi_Place(10, 10, 100, 50, kFillNative, &p));
    EXPECT_EQ(p.destWidth, 10);
    EXPECT_EQ(p.offsetX, 45);
    EXPECT_EQ(p.offsetY, 20);
    ASSERT_TRUE(Sqi_Place(1, 1, 1, 1, kFillAutoFit, &p));
    EXPECT_EQ(p.bufferWidth, 1u);
    EXPECT_EQ(p.bufferHeight, 1u);
}

TEST(SqiPlacement, NothingBelowOnePixel) {
    SqiPlacement p;
    EXPECT_FALSE(Sqi_Place(10, 10, 0, 50, kFillStretch, &p));
    EXPECT_FALSE(Sqi_Place(10, 10, 50, 0, kFillAutoFit, &p));
    EXPECT_FALSE(Sqi_Place(1000, 1, 10, 10, kFillAutoFit, &p));  // 10 x 0.01 pixels
    EXPECT_FALSE(Sqi_Place(0, 10, 10, 10, kFillAutoFit, &p));
}

TEST(SqiTree, OnePixelWhoseRootSplitsFillsItAndReadsThroughTheChildren) {
    BitWriter s;
    s.Split(21, 5);
    s.Split(3, 5);  // inert child that splits again: its subtree is read too
    for (int i = 0; i < 4; ++i) s.Leaf(7, 5);
    for (int i = 0; i < 3; ++i) s.Leaf(9, 5);
    s.Leaf(30, 5);  // the node after the tree: must not have been consumed
    uint8_t buffer = 0;
    EXPECT_EQ(Sqi_DecodePlane(s.bytes.data(), s.bytes.size(), 5, 1, 1, &buffer), 9u * 6u);
    EXPECT_EQ(buffer, 21);
}

TEST(SqiTree, OnePixelIconDrawsTheRootValues) {
    BitWriter planes[4];
    const uint32_t values[4] = {21, 40, 11, 255};
    const int widths[4] = {5, 6, 5, 8};
    for (int p = 0; p < 4; ++p) {
        planes[p].Split(values[p], widths[p]);
        for (int i = 0; i < 4; ++i) planes[p].Leaf(1, widths[p]);
    }
    Canvas canvas(3, 3);
    const auto file = sqi_test::File(64, 64, 0, planes);
    ASSERT_TRUE(Sqi_Draw(file.data(), file.size(), canvas.Target(1, 1, 1, 1)));
    EXPECT_EQ(canvas.At(1, 1), Sqi_PixelFrom565(Covered(21), Covered(40), Covered(11)));
    EXPECT_EQ(canvas.At(0, 0), 0u);
    EXPECT_EQ(canvas.At(2, 2), 0u);
}

TEST(SqiTree, QuadrantsOfTheRootLandInTheStretchedBuffer) {
    BitWriter s;
    s.Split(0, 5);
    s.Leaf(1, 5);
    s.Leaf(2, 5);
    s.Leaf(3, 5);
    s.Leaf(4, 5);
    std::vector<uint8_t> buffer(128 * 64, 0xEE);
    Sqi_DecodePlane(s.bytes.data(), s.bytes.size(), 5, 128, 64, buffer.data());
    EXPECT_EQ(buffer[0], 1);
    EXPECT_EQ(buffer[63], 1);
    EXPECT_EQ(buffer[64], 2);
    EXPECT_EQ(buffer[31 * 128 + 127], 2);
    EXPECT_EQ(buffer[32 * 128], 3);
    EXPECT_EQ(buffer[63 * 128 + 127], 4);
}

TEST(SqiTree, ZeroHeightChildrenDrawNothing) {
    // A 2 x 1 buffer: the root's upper children have height 0.
    BitWriter s;
    s.Split(0, 5);
    s.Leaf(5, 5);
    s.Leaf(6, 5);
    s.Leaf(7, 5);
    s.Leaf(8, 5);
    uint8_t buffer[2] = {0xEE, 0xEE};
    Sqi_DecodePlane(s.bytes.data(), s.bytes.size(), 5, 2, 1, buffer);
    EXPECT_EQ(buffer[0], 7);
    EXPECT_EQ(buffer[1], 8);
}

TEST(SqiTree, SinglePixelNodeThatSplitsKeepsItsOwnValue) {
    // 2 x 2: the first child is one pixel and splits; its children are inert,
    // even the one that would split again.
    BitWriter s;
    s.Split(0, 5);
    s.Split(17, 5);
    s.Split(29, 5);
    for (int i = 0; i < 4; ++i) s.Leaf(30, 5);
    for (int i = 0; i < 3; ++i) s.Leaf(31, 5);
    s.Leaf(2, 5);
    s.Leaf(3, 5);
    s.Leaf(4, 5);
    uint8_t buffer[4] = {};
    const uint64_t used = Sqi_DecodePlane(s.bytes.data(), s.bytes.size(), 5, 2, 2, buffer);
    EXPECT_EQ(used, 13u * 6u);
    EXPECT_EQ(buffer[0], 17);
    EXPECT_EQ(buffer[1], 2);
    EXPECT_EQ(buffer[2], 3);
    EXPECT_EQ(buffer[3], 4);
}

TEST(SqiTree, StreamThatEndsEarlyReadsZeros) {
    BitWriter s;
    s.Split(9, 5);  // children missing: they read as value 0, leaf
    std::vector<uint8_t> buffer(4, 0xEE);
    EXPECT_EQ(Sqi_DecodePlane(s.bytes.data(), s.bytes.size(), 5, 2, 2, buffer.data()), 30u);
    EXPECT_EQ(buffer, std::vector<uint8_t>(4, 0));
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
