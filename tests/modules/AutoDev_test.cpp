// AutoDev: the derived parameters and RoI sizes, the monochrome test, the clamp
// to max - 1, the segment and curve rules, grey output for monochrome data, the
// preview shading and the stretch of a real linear stack. The exact output on
// synthetic skies, the tone blend included, is pinned in KernelDigest_test.
#include "modules/autodev/AutoDev_Internal.h"
#include "modules/autodev/AutoDev_Params.h"

#include "ModuleTestImages.h"
#include "formats/Fits_Read.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>
#include <vector>

namespace {

int64_t Median(std::vector<int64_t> v) {
    std::nth_element(v.begin(), v.begin() + v.size() / 2, v.end());
    return v[v.size() / 2];
}

std::vector<int64_t> Luminance(const ImageBuffer* image) {
    std::vector<int64_t> l;
    l.reserve(size_t(image->width) * size_t(image->height));
    for (int32_t y = 0; y < image->height; ++y)
        for (int32_t x = 0; x < image->width; ++x)
            l.push_back((Pixel(image, 0, x, y) + Pixel(image, 1, x, y) + Pixel(image, 2, x, y)) / 3);
    return l;
}

// Segments as (first, last) pairs.
std::vector<std::pair<int64_t, int64_t>> Ranges(const std::vector<AutoDevSegment>& segments) {
    std::vector<std::pair<int64_t, int64_t>> out;
    for (const AutoDevSegment& s : segments) out.emplace_back(s.first, s.last);
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
    ASSERT_EQ(Ranges(s), (std::vector<std::pair<int64_t, int64_t>>{{0, 20}, {21, 30}, {31, kAutoDevMax}}));
    EXPECT_EQ(s[0].weight, 400);
    // Shares (w << 24) / total, outputs running over the 24-bit range.
    EXPECT_EQ(s[0].ya, 0);
    EXPECT_EQ(s[0].yb, (int64_t{400} << 24) / 1000);
    EXPECT_EQ(s[1].ya, s[0].yb);
    EXPECT_EQ(s[1].yb, s[1].ya);  // no weight, no output range
    EXPECT_EQ(s[2].yb, s[2].ya + (int64_t{600} << 24) / 1000);
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
    EXPECT_EQ(Ranges(AutoDev_Segments(top, 4096)),
              (std::vector<std::pair<int64_t, int64_t>>{{0, kAutoDevMax}}));
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

TEST(AutoDevRealData, StretchesTheM94StackWithItsColour) {
    PELLUCIDA_REQUIRE_DATA(path, "derived/siril_M94_32x10s_rgb_uint16.fit");
    ImagePtr stack(Fits_Read(path.c_str()));
    ASSERT_TRUE(stack);
    ASSERT_EQ(stack->bitDepth, 30);
    const bool mono = AutoDev_IsMonochrome(stack.get());
    EXPECT_FALSE(mono);
    ImagePtr out(AutoDev_Run(stack.get(),
                             AutoDev_Settings(AutoDevParams{}, stack->width, stack->height, mono), nullptr));
    ASSERT_TRUE(out);
    const std::vector<int64_t> lin = Luminance(stack.get()), str = Luminance(out.get());
    const int64_t before = Median(lin), after = Median(str);
    // Linear: the sky median sits near black; stretched: well up into the
    // tones, yet far from white.
    EXPECT_LT(before, stack->maxValue / 10);
    EXPECT_GT(after, out->maxValue / 10);
    EXPECT_LT(after, out->maxValue * 7 / 10);
    // Brighter stays brighter on the whole: the curve is monotonic.
    int64_t pairs = 0, inversions = 0;
    for (size_t a = 0, b = 997; b < lin.size(); a = b, b += 997, ++pairs)
        if ((lin[a] < lin[b]) != (str[a] < str[b]) && lin[a] != lin[b] && str[a] != str[b]) ++inversions;
    EXPECT_LT(inversions, pairs / 20);
    EXPECT_FALSE(AutoDev_IsMonochrome(out.get()));
    // Colour ratios of bright, unsaturated pixels are those of the source.
    int checked = 0;
    for (int32_t y = 0; y < out->height && checked < 200; y += 3)
        for (int32_t x = 0; x < out->width && checked < 200; x += 3) {
            const int64_t g = Pixel(stack.get(), 1, x, y), r = Pixel(stack.get(), 0, x, y);
            const int64_t og = Pixel(out.get(), 1, x, y), orr = Pixel(out.get(), 0, x, y);
            if (g < stack->maxValue / 64 || og > out->maxValue / 2 || og == 0) continue;
            EXPECT_NEAR(double(orr) / double(og), double(r) / double(g), 0.01);
            ++checked;
        }
    EXPECT_GT(checked, 0);
}
