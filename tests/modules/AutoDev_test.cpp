// AutoDev: the derived parameters and RoI sizes, the monochrome test, the clamp
// to max - 1, the segment and curve rules, grey output for monochrome data and
// the preview shading. The exact output on synthetic skies, the tone blend
// included, is pinned in KernelDigest_test.
#include "modules/autodev/AutoDev_Internal.h"
#include "modules/autodev/AutoDev_Params.h"

#include "ModuleTestImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>
#include <vector>

namespace {

// Segments as (first, last, weight, Ya, Yb).
using Segment = std::tuple<int64_t, int64_t, int64_t, int64_t, int64_t>;
std::vector<Segment> Fields(const std::vector<AutoDevSegment>& segments) {
    std::vector<Segment> out;
    for (const AutoDevSegment& s : segments) out.emplace_back(s.first, s.last, s.weight, s.ya, s.yb);
    return out;
}

}  // namespace

// The kernel settings the setters stand for, on a 100 x 80 image.
TEST(AutoDevSettings, FromThePositions) {
    struct Case {
        int32_t x0, y0, x1, y1;
        std::vector<int32_t> roi;  // x, y, width, height
        double p4;
    } cases[] = {
        // The whole image is max - min of the corners, a little less than its area.
        {0, 0, kParamLast, kParamLast, {0, 0, 99, 79}, 0.15 * (99.0 * 79.0 / 8000.0)},
        {60, 50, 20, 10, {20, 10, 40, 40}, 0.15 * (1600.0 / 8000.0)},     // corners in any order
        {60, 50, 60, 10, {60, 10, 0, 40}, 0.15},                          // zero area: p4 as set
        {0, 0, 5000, 79, {0, 0, 99, 79}, 0.15 * (99.0 * 79.0 / 8000.0)},  // clamped by the setters
    };
    for (const Case& c : cases) {
        const AutoDevParams p{.roiX0 = c.x0, .roiY0 = c.y0, .roiX1 = c.x1, .roiY1 = c.y1};
        const AutoDevSettings s = AutoDev_Settings(p, 100, 80, false);
        EXPECT_EQ((std::vector<int32_t>{s.roiX, s.roiY, s.roiWidth, s.roiHeight}), c.roi);
        EXPECT_DOUBLE_EQ(s.p4, c.p4);
    }
    // "off" on the form, yet a half-width of 0.5: the blur is not skipped.
    EXPECT_EQ(AutoDev_Settings(AutoDevParams{}, 100, 80, true).p1, 0.5);
}

TEST(AutoDevMonochrome, ThresholdIsTwoToTheDepthMinusEight) {
    const int64_t t = int64_t{1} << 22;  // 30 bits
    ImagePtr grey =
        MakeImage(8, 8, 30, [&](int32_t x, int32_t, int c) { return 1000000 + x + (c == 2 ? t - 1 : 0); });
    EXPECT_TRUE(AutoDev_IsMonochrome(grey.get()));
    ImagePtr colour = MakeImage(8, 8, 30, [&](int32_t x, int32_t y, int c) {
        return 1000000 + x + (c == 1 && x == 7 && y == 7 ? t : 0);
    });
    EXPECT_FALSE(AutoDev_IsMonochrome(colour.get()));
    ImagePtr eight = MakeImage(4, 4, 8, [](int32_t, int32_t, int c) { return 100 + c; });
    EXPECT_FALSE(AutoDev_IsMonochrome(eight.get()));
}

// A flat image has no structure, so the curve is the identity; with no tone
// blend what is left shows directly: the clamp to max - 1 at the top, and the
// way back from 24 bits with the new low bits set, as Image_SetBitDepth does.
TEST(AutoDevRun, FlatImagesThroughTheIdentityCurve) {
    struct Case {
        int bitDepth;
        int64_t value;
        bool mono;
        int64_t expected;
    } cases[] = {
        {24, (1 << 24) - 1, true, (1 << 24) - 2},
        {24, (1 << 24) - 1, false, (1 << 24) - 2},
        {30, int64_t{123456} << 6, true, (int64_t{123456} << 6) | 63},
    };
    const AutoDevParams p{.tone = 0};
    for (const Case& c : cases) {
        ImagePtr flat = MakeImage(16, 12, c.bitDepth, [&](int32_t, int32_t, int) { return c.value; });
        ImagePtr out(AutoDev_Run(flat.get(), AutoDev_Settings(p, 16, 12, c.mono), nullptr));
        ASSERT_TRUE(out);
        for (int ch = 0; ch < 3; ++ch) EXPECT_EQ(Pixel(out.get(), ch, 5, 5), c.expected) << c.bitDepth;
        EXPECT_EQ(out->bitDepth, c.bitDepth);
        EXPECT_EQ(out->maxValue, (int64_t{1} << c.bitDepth) - 1);
    }
}

TEST(AutoDevCurve, SegmentsCloseWhenTheCountExceedsNAndTheLastEndsAtTheTop) {
    std::vector<uint32_t> counts(kAutoDevValues, 0);
    std::vector<int64_t> weights(kAutoDevValues, 0);
    // 3 x 4096 pixels: N = 3. 2 + 2 > 3 closes [0, 20], 5 closes [21, 30], the
    // one left over is [31, 2^24 - 1].
    for (auto [value, count, weight] : {std::tuple{10, 2, 100}, {20, 2, 300}, {30, 5, 0}, {40, 1, 600}})
        counts[value] = count, weights[value] = weight;
    const AutoDevHistogram h{counts.data(), weights.data(), 10, 40};
    const std::vector<AutoDevSegment> s = AutoDev_Segments(h, 3 * 4096);
    // Shares (w << 24) / total, outputs running over the 24-bit range; the
    // middle segment has no weight, so no output range.
    const int64_t y1 = (int64_t{400} << 24) / 1000, y2 = y1 + (int64_t{600} << 24) / 1000;
    ASSERT_EQ(Fields(s), (std::vector<Segment>{
                             {0, 20, 400, 0, y1}, {21, 30, 0, y1, y1}, {31, kAutoDevMax, 600, y1, y2}}));
    // Linear inside a segment, truncating; one whose ends are equal maps to its Ya.
    EXPECT_EQ(AutoDev_CurveValue(s[0], 0), 0);
    EXPECT_EQ(AutoDev_CurveValue(s[0], 20), s[0].yb);
    EXPECT_EQ(AutoDev_CurveValue(s[0], 10), (10 * s[0].ya + 10 * s[0].yb) / 20);
    EXPECT_EQ(AutoDev_CurveValue(AutoDevSegment{7, 7, 1, 1234, 5678}, 7), 1234);

    // Closed on the top value: no empty segment after it; no weight at all: no curve.
    std::fill(counts.begin(), counts.end(), 0);
    std::fill(weights.begin(), weights.end(), 0);
    counts[kAutoDevMax] = 4096;  // N = 1
    weights[kAutoDevMax] = 5;
    const AutoDevHistogram top{counts.data(), weights.data(), kAutoDevMax, kAutoDevMax};
    EXPECT_EQ(Fields(AutoDev_Segments(top, 4096)), (std::vector<Segment>{{0, kAutoDevMax, 5, 0, 1 << 24}}));
    weights[kAutoDevMax] = 0;
    EXPECT_TRUE(AutoDev_Segments(top, 4096).empty());
}

// Data taken for monochrome may still differ a little between channels; the
// result is the grey value in every channel all the same.
TEST(AutoDevRun, MonochromeStaysGreyAndTheSourceIsNotTouched) {
    ImagePtr sky = TestSky(120, 90, 30);
    ImagePtr copy(Image_Clone(sky.get()));
    ImagePtr out(
        AutoDev_Run(sky.get(), AutoDev_Settings(AutoDevParams{}, sky->width, sky->height, true), nullptr));
    ASSERT_TRUE(out);
    EXPECT_EQ(ImageDifference(sky.get(), copy.get()), "");
    const ImagePtr grey = MakeImage(out->width, out->height, out->bitDepth,
                                    [&](int32_t x, int32_t y, int) { return Pixel(out.get(), 0, x, y); });
    EXPECT_EQ(ImageDifference(out.get(), grey.get()), "");
}

TEST(AutoDevPreview, OutsideTheRoiIsLightened) {
    ImagePtr image = MakeImage(10, 10, 30, [](int32_t, int32_t, int) { return 1000; });
    const AutoDevParams p{.roiX0 = 2, .roiY0 = 2, .roiX1 = 6, .roiY1 = 6};
    AutoDev_ShadeOutsideRoi(image.get(), AutoDev_Settings(p, 10, 10, false));
    EXPECT_EQ(Pixel(image.get(), 0, 3, 3), 1000);
    EXPECT_EQ(Pixel(image.get(), 0, 6, 3), (3000 + image->maxValue) / 4);  // x = x0 + width is outside
    EXPECT_EQ(Pixel(image.get(), 1, 0, 0), (3000 + image->maxValue) / 4);
}
