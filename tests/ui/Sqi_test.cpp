// The .sqi decoder: placement by fill mode, the power-of-two decode buffer,
// the quadtree rules for inert and zero-sized nodes, resampling and the pixel
// operations of direct and tinted icons.
#include "DrawCanvas.h"
#include "support/LittleEndian.h"
#include "ui/WidgetKinds.h"
#include "ui/archive/Sqi_Decode.h"

#include <cstdlib>
#include <tuple>
#include <vector>

namespace {

// Writing .sqi bit streams by hand: bits least significant first within each
// byte, a value's lowest bit first.
struct BitWriter {
    std::vector<uint8_t> bytes;
    uint64_t bits = 0;

    void Bit(uint32_t b) {
        if (bits % 8 == 0) bytes.push_back(0);
        if (b) bytes.back() |= uint8_t(1u << (bits % 8));
        ++bits;
    }
    // A node: its value, then its split bit.
    void Node(uint32_t v, int width, bool split) {
        for (int i = 0; i < width; ++i) Bit((v >> i) & 1u);
        Bit(split);
    }
};

// Nodes written as words, "S21" a node of value 21 that splits, "L7" a leaf.
BitWriter Nodes(const char* words, int width) {
    BitWriter w;
    for (const char* p = words; *p;) {
        const bool split = *p == 'S';
        char* end = nullptr;
        const uint32_t v = uint32_t(std::strtoul(p + 1, &end, 10));
        w.Node(v, width, split);
        p = *end ? end + 1 : end;
    }
    return w;
}

// A whole file from four plane streams.
std::vector<uint8_t> File(uint16_t w, uint16_t h, uint32_t mode, const BitWriter (&planes)[4]) {
    std::vector<uint8_t> out;
    LittleEndian_Append(out, w, 2);
    LittleEndian_Append(out, h, 2);
    LittleEndian_Append(out, mode, 4);
    for (const BitWriter& p : planes) {
        LittleEndian_Append(out, uint32_t(p.bytes.size()), 4);
        out.insert(out.end(), p.bytes.begin(), p.bytes.end());
    }
    return out;
}

// Four planes that are each one uniform leaf.
std::vector<uint8_t> Uniform(uint16_t w, uint16_t h, uint32_t mode, uint32_t r, uint32_t g, uint32_t b,
                             uint32_t a) {
    BitWriter planes[4];
    const uint32_t values[4] = {r, g, b, a};
    const int widths[4] = {5, 6, 5, 8};
    for (int i = 0; i < 4; ++i) planes[i].Node(values[i], widths[i], false);
    return File(w, h, mode, planes);
}

// The strongest coverage, 255 of 256, leaves a field at (v * 255) >> 8 over black.
uint32_t Covered(uint32_t v) {
    return (v * 255) >> 8;
}

// A widget at (x, y) of w x h on the canvas, whose padded rows show any write past the framebuffer's width.
SqiTarget Target(DrawCanvas& c, int32_t x, int32_t y, int32_t w, int32_t h, uint32_t mode = kFillStretch) {
    // The framebuffer, then the widget's rectangle and fill mode, in the order SqiTarget declares them.
    return {
        c.pixels.data(), uint32_t(c.pixelsPerRow), uint32_t(c.width), uint32_t(c.height), x, y, w, h, mode};
}

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
TEST(SqiTree, NodesSplitFillAndStopByTheRulesAndResamplingAveragesSixteenSamples) {
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
        const BitWriter s = Nodes(c.nodes, 5);
        std::vector<uint8_t> buffer(c.w * c.h, 0xEE);
        EXPECT_EQ(Sqi_DecodePlane(s.bytes.data(), s.bytes.size(), 5, c.w, c.h, buffer.data()), c.bitsUsed)
            << c.nodes;
        EXPECT_EQ(buffer, c.expected) << c.nodes;
    }
    // The root's quadrants land in the quarters of a stretched 128 x 64 buffer.
    const BitWriter s = Nodes("S0 L1 L2 L3 L4", 5);
    std::vector<uint8_t> buffer(128 * 64, 0xEE);
    Sqi_DecodePlane(s.bytes.data(), s.bytes.size(), 5, 128, 64, buffer.data());
    for (auto [at, value] :
         {std::pair{0, 1}, {63, 1}, {64, 2}, {31 * 128 + 127, 2}, {32 * 128, 3}, {63 * 128 + 127, 4}})
        EXPECT_EQ(buffer[size_t(at)], value) << at;
    // Resampling averages sixteen samples.
    // Red quadrants 31, 0, 0, 16, opaque: shown 2 x 2 each is one pixel.
    const BitWriter planes[4] = {Nodes("S0 L31 L0 L0 L16", 5), Nodes("L0", 6), Nodes("L0", 5),
                                 Nodes("L255", 8)};
    const auto file = File(4, 4, 0, planes);
    DrawCanvas small(2, 2);
    ASSERT_TRUE(Sqi_Draw(file.data(), file.size(), Target(small, 0, 0, 2, 2)));
    EXPECT_EQ(small.At(0, 0) >> 19, Covered(31));
    EXPECT_EQ(small.At(1, 0) >> 19, 0u);
    EXPECT_EQ(small.At(1, 1) >> 19, Covered(16));
    // Shown 3 x 3 the buffer is 4 x 4 with 2 x 2 quadrants; the step is 4/3
    // and pixel (1, 1) samples 1, 1.33, 1.67, 2 on each axis: 3 x 3 of its 16
    // samples lie in the top-left quadrant, 1 in the bottom-right one.
    DrawCanvas three(3, 3);
    ASSERT_TRUE(Sqi_Draw(file.data(), file.size(), Target(three, 0, 0, 3, 3)));
    EXPECT_EQ(three.At(1, 1) >> 19, Covered((9u * 31u + 1u * 16u) >> 4));
}

TEST(SqiPixels, DirectColourBlendsCoverageAndTintedModeAddsTheScaledTintsWithoutClamping) {
    // A uniform icon over blue 31, drawn on the left half: coverage 255 of 256
    // leaves a trace of the blue, 128 weighs both halves, 0 leaves the pixel.
    const uint32_t blue = Sqi_PixelFrom565(0, 0, 31);
    struct Case {
        uint32_t r, g, b, a, expected;
    };
    const Case cases[] = {{31, 10, 0, 255, Sqi_PixelFrom565((31 * 255) >> 8, (10 * 255) >> 8, (31 * 1) >> 8)},
                          {31, 0, 0, 128, Sqi_PixelFrom565(15, 0, 15)},
                          {31, 63, 31, 0, blue}};
    for (const Case& c : cases) {
        DrawCanvas canvas(4, 4, blue);
        const auto file = Uniform(4, 4, 0, c.r, c.g, c.b, c.a);
        ASSERT_TRUE(Sqi_Draw(file.data(), file.size(), Target(canvas, 0, 0, 2, 4)));
        EXPECT_EQ(canvas.At(0, 0), c.expected) << "coverage " << c.a;
        EXPECT_EQ(canvas.At(2, 0), blue) << "coverage " << c.a;
    }
    // Tinted mode scales the tints and adds them without clamping.
    DrawCanvas canvas(1, 1);
    SqiTarget t = Target(canvas, 0, 0, 1, 1);
    t.tint[0] = 0xF800;  // red 31
    t.tint[1] = 0x07E0;  // green 63
    t.tint[2] = 0x001F;  // blue 31
    const auto file = Uniform(8, 8, kSqiModeTinted, 31, 32, 16, 255);
    ASSERT_TRUE(Sqi_Draw(file.data(), file.size(), t));
    // s = value << (8 - bits): 248, 128, 128.
    const uint32_t r = 31 * 248 / 256, g = 63 * 128 / 256, b = 31 * 128 / 256;
    EXPECT_EQ(canvas.At(0, 0), Sqi_PixelFrom565((r * 255) >> 8, (g * 255) >> 8, (b * 255) >> 8));

    // Two full tints of white overflow the red field into the bits above it:
    // 30 + 30 = 60 red does not fit 5 bits and the 5-6-5 word keeps 60 & 31.
    DrawCanvas over(1, 1);
    SqiTarget o = Target(over, 0, 0, 1, 1);
    o.tint[0] = 0xF800;
    o.tint[1] = 0xF800;
    const auto both = Uniform(8, 8, kSqiModeTinted, 31, 63, 0, 255);
    ASSERT_TRUE(Sqi_Draw(both.data(), both.size(), o));
    const uint32_t sum = 31 * 248 / 256 + 31 * 252 / 256;
    EXPECT_EQ(sum, 60u);
    EXPECT_EQ(over.At(0, 0), Sqi_PixelFrom565(((sum & 31) * 255) >> 8, 0, 0));
}

TEST(SqiDraw, ClipsToWidgetAndFramebufferAndRefusesShortFilesOrDrawsThemSafely) {
    DrawCanvas canvas(4, 4);
    const auto file = Uniform(4, 4, 0, 31, 0, 0, 255);
    // A widget hanging off the bottom-right corner.
    ASSERT_TRUE(Sqi_Draw(file.data(), file.size(), Target(canvas, 2, 2, 8, 8)));
    EXPECT_EQ(canvas.At(1, 1), 0u);
    EXPECT_NE(canvas.At(3, 3), 0u);
    EXPECT_TRUE(canvas.PaddingIs(0)) << "rows end at the framebuffer's width, not its stride";
    // AutoFillOut overhangs the widget and is cut at its edges.
    DrawCanvas wide(10, 10);
    ASSERT_TRUE(Sqi_Draw(file.data(), file.size(), Target(wide, 2, 4, 6, 2, kFillAutoFillOut)));
    for (auto [x, y, drawn] :
         {std::tuple{2, 3, false}, {2, 4, true}, {7, 5, true}, {7, 6, false}, {8, 5, false}})
        EXPECT_EQ(wide.At(x, y) != 0u, drawn) << x << "," << y;
    // Short or empty files are refused or drawn safely.
    const uint8_t header[4] = {1, 0, 1, 0};
    EXPECT_FALSE(Sqi_Draw(header, sizeof header, Target(canvas, 0, 0, 4, 4)));
    // A header with no planes: every plane reads as zeros, coverage 0.
    const uint8_t bare[8] = {4, 0, 4, 0, 0, 0, 0, 0};
    DrawCanvas keep(4, 4, Sqi_PixelFrom565(1, 2, 3));
    EXPECT_TRUE(Sqi_Draw(bare, sizeof bare, Target(keep, 0, 0, 4, 4)));
    EXPECT_EQ(keep.At(2, 2), Sqi_PixelFrom565(1, 2, 3));
}

}  // namespace
