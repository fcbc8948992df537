// AutoDev: the derived parameters and RoI sizes, the monochrome test, the clamp
// to max - 1, the segment and curve rules, the tone blend, determinism over
// worker counts, and the stretch of a real linear stack.
#include "modules/autodev/AutoDev_Internal.h"
#include "modules/autodev/AutoDev_Params.h"

#include "ModuleTestImages.h"
#include "formats/Fits_Read.h"
#include "support/TestData.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
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

// A linear sky: faint background, noise, a few stars and a colour cast.
ImagePtr SyntheticSky(int32_t w, int32_t h) {
    return MakeImage(w, h, 30, [&](int32_t x, int32_t y, int c) {
        const int64_t base = 20000000 + 3000000 * c;
        const int64_t noise =
            static_cast<int64_t>(TestHash(uint64_t(y) * 7919 + uint64_t(x) * 3 + uint64_t(c)) % 2000000);
        const int64_t dx = x % 37 - 18, dy = y % 29 - 14;
        const int64_t star = dx * dx + dy * dy < 6 ? 600000000 / (1 + dx * dx + dy * dy) : 0;
        return std::min<int64_t>(base + noise + star, (int64_t{1} << 30) - 1);
    });
}

}  // namespace

// The kernel settings the setters stand for, on a 100 x 80 image.
TEST(AutoDevSettings, FromThePositions) {
    struct Case {
        int32_t x0, y0, x1, y1;
        int32_t roiX, roiY, roiWidth, roiHeight;
        double p4;
    } cases[] = {
        // The whole image is max - min of the corners, a little less than its area.
        {0, 0, kParamLast, kParamLast, 0, 0, 99, 79, 0.15 * (99.0 * 79.0 / 8000.0)},
        {60, 50, 20, 10, 20, 10, 40, 40, 0.15 * (1600.0 / 8000.0)},     // corners in any order
        {60, 50, 60, 10, 60, 10, 0, 40, 0.15},                          // zero area: p4 as set
        {0, 0, 5000, 79, 0, 0, 99, 79, 0.15 * (99.0 * 79.0 / 8000.0)},  // clamped by the setters
    };
    for (const Case& c : cases) {
        AutoDevParams p;
        p.roiX0 = c.x0;
        p.roiY0 = c.y0;
        p.roiX1 = c.x1;
        p.roiY1 = c.y1;
        const AutoDevSettings s = AutoDev_Settings(p, 100, 80, false);
        EXPECT_EQ(s.roiX, c.roiX);
        EXPECT_EQ(s.roiY, c.roiY);
        EXPECT_EQ(s.roiWidth, c.roiWidth);
        EXPECT_EQ(s.roiHeight, c.roiHeight);
        EXPECT_DOUBLE_EQ(s.p4, c.p4);
    }
    // "off" on the form, yet a half-width of 0.5: the blur is not skipped.
    const AutoDevSettings d = AutoDev_Settings(AutoDevParams{}, 100, 80, true);
    EXPECT_EQ(d.p1, 0.5);
    EXPECT_EQ(d.p2, 1.0);
    EXPECT_EQ(d.p3, 0.5);
    EXPECT_TRUE(d.monochrome);
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

TEST(AutoDevRun, InputsAtMaxEndAtMaxMinusOne) {
    // A flat 24-bit image at its maximum: no structure, so the curve is the
    // identity, and with no tone blend the clamp to max - 1 shows directly.
    ImagePtr flat = MakeImage(16, 12, 24, [](int32_t, int32_t, int) { return (1 << 24) - 1; });
    AutoDevParams p;
    p.tone = 0;
    for (bool mono : {true, false}) {
        ImagePtr out(AutoDev_Run(flat.get(), AutoDev_Settings(p, flat->width, flat->height, mono), nullptr));
        ASSERT_TRUE(out);
        for (int c = 0; c < 3; ++c) EXPECT_EQ(Pixel(out.get(), c, 5, 5), (1 << 24) - 2);
    }
}

TEST(AutoDevRun, FlatImageKeepsItsValueThroughTheIdentityCurve) {
    ImagePtr flat = MakeImage(20, 10, 30, [](int32_t, int32_t, int) { return int64_t{123456} << 6; });
    AutoDevParams p;
    p.tone = 0;
    ImagePtr out(AutoDev_Run(flat.get(), AutoDev_Settings(p, flat->width, flat->height, true), nullptr));
    ASSERT_TRUE(out);
    // Back from 24 bits with the new low bits set, as Image_SetBitDepth does.
    EXPECT_EQ(Pixel(out.get(), 0, 3, 3), (int64_t{123456} << 6) | 63);
    EXPECT_EQ(out->bitDepth, 30);
    EXPECT_EQ(out->maxValue, (int64_t{1} << 30) - 1);
}

TEST(AutoDevCurve, SegmentsCloseWhenTheCountExceedsNAndTheLastEndsAtTheTop) {
    std::vector<uint32_t> counts(kAutoDevValues, 0);
    std::vector<int64_t> weights(kAutoDevValues, 0);
    // 3 x 4096 pixels: N = 3.
    counts[10] = 2;
    counts[20] = 2;  // 4 > 3: closes [0, 20]
    counts[30] = 5;  // closes [21, 30]
    counts[40] = 1;  // left over: [31, 2^24 - 1]
    weights[10] = 100;
    weights[20] = 300;
    weights[30] = 0;
    weights[40] = 600;
    const AutoDevHistogram h{counts.data(), weights.data(), 10, 40};
    const std::vector<AutoDevSegment> s = AutoDev_Segments(h, 3 * 4096);
    ASSERT_EQ(s.size(), 3u);
    EXPECT_EQ(s[0].first, 0);
    EXPECT_EQ(s[0].last, 20);
    EXPECT_EQ(s[0].weight, 400);
    EXPECT_EQ(s[1].first, 21);
    EXPECT_EQ(s[1].last, 30);
    EXPECT_EQ(s[2].first, 31);
    EXPECT_EQ(s[2].last, kAutoDevMax);
    // Shares (w << 24) / total, outputs running over the 24-bit range.
    EXPECT_EQ(s[0].ya, 0);
    EXPECT_EQ(s[0].yb, (int64_t{400} << 24) / 1000);
    EXPECT_EQ(s[1].ya, s[0].yb);
    EXPECT_EQ(s[1].yb, s[1].ya);  // no weight, no output range
    EXPECT_EQ(s[2].yb, s[2].ya + (int64_t{600} << 24) / 1000);
    // Linear inside a segment, truncating.
    EXPECT_EQ(AutoDev_CurveValue(s[0], 0), 0);
    EXPECT_EQ(AutoDev_CurveValue(s[0], 20), s[0].yb);
    EXPECT_EQ(AutoDev_CurveValue(s[0], 10), (10 * s[0].ya + 10 * s[0].yb) / 20);
}

TEST(AutoDevCurve, SegmentClosedOnTheTopValueLeavesNoEmptySegmentAndNoWeightMeansIdentity) {
    std::vector<uint32_t> counts(kAutoDevValues, 0);
    std::vector<int64_t> weights(kAutoDevValues, 0);
    counts[kAutoDevMax] = 4096;  // N = 1
    weights[kAutoDevMax] = 5;
    const AutoDevHistogram h{counts.data(), weights.data(), kAutoDevMax, kAutoDevMax};
    const std::vector<AutoDevSegment> s = AutoDev_Segments(h, 4096);
    ASSERT_EQ(s.size(), 1u);
    EXPECT_EQ(s[0].first, 0);
    EXPECT_EQ(s[0].last, kAutoDevMax);
    weights[kAutoDevMax] = 0;
    EXPECT_TRUE(AutoDev_Segments(h, 4096).empty());
    // A segment whose ends are equal maps to its Ya.
    EXPECT_EQ(AutoDev_CurveValue(AutoDevSegment{7, 7, 1, 1234, 5678}, 7), 1234);
}

TEST(AutoDevCurve, ToneBlendEnds) {
    const int64_t m = (int64_t{1} << 30) - 1;
    // Full blend: black stays black, white stays (nearly) white, mid-grey is
    // the sRGB-decoded value re-encoded with a pure 2.2 power, a little darker.
    EXPECT_EQ(AutoDev_ToneBlend(0, m, 1.0), 0);
    EXPECT_GE(AutoDev_ToneBlend(m, m, 1.0), m - 1);
    const int64_t mid = AutoDev_ToneBlend(m / 2, m, 1.0);
    EXPECT_LT(mid, m / 2);
    EXPECT_GT(mid, m / 2 - m / 20);
    // Half blend lies between.
    const int64_t half = AutoDev_ToneBlend(m / 2, m, 0.5);
    EXPECT_GT(half, mid);
    EXPECT_LT(half, m / 2);
}

TEST(AutoDevRun, StretchesALinearSkyAndKeepsItsColour) {
    ImagePtr sky = SyntheticSky(300, 200);
    ASSERT_FALSE(AutoDev_IsMonochrome(sky.get()));
    ImagePtr out(
        AutoDev_Run(sky.get(), AutoDev_Settings(AutoDevParams{}, sky->width, sky->height, false), nullptr));
    ASSERT_TRUE(out);
    const int64_t before = Median(Luminance(sky.get())), after = Median(Luminance(out.get()));
    EXPECT_LT(before, sky->maxValue / 20);
    EXPECT_GT(after, sky->maxValue / 8);
    // The colour of each pixel is the source's: blue above red in the background.
    EXPECT_GT(Pixel(out.get(), 2, 3, 3), Pixel(out.get(), 0, 3, 3));
    for (int32_t y = 0; y < out->height; ++y)
        for (int32_t x = 0; x < out->width; ++x)
            for (int c = 0; c < 3; ++c) {
                ASSERT_GE(Pixel(out.get(), c, x, y), 0);
                ASSERT_LE(Pixel(out.get(), c, x, y), out->maxValue);
            }
}

TEST(AutoDevRun, MonochromeStaysGreyAndTheSourceIsNotTouched) {
    ImagePtr sky = SyntheticSky(120, 90);
    ImagePtr copy(Image_Clone(sky.get()));
    ImagePtr out(
        AutoDev_Run(sky.get(), AutoDev_Settings(AutoDevParams{}, sky->width, sky->height, true), nullptr));
    ASSERT_TRUE(out);
    EXPECT_EQ(ImageDifference(sky.get(), copy.get()), "");
    for (int32_t y = 0; y < out->height; y += 7)
        for (int32_t x = 0; x < out->width; x += 5) {
            EXPECT_EQ(Pixel(out.get(), 0, x, y), Pixel(out.get(), 1, x, y));
            EXPECT_EQ(Pixel(out.get(), 0, x, y), Pixel(out.get(), 2, x, y));
        }
}

TEST(AutoDevRun, CancelledRunGivesNothingAndLeavesTheDestination) {
    ImagePtr sky = SyntheticSky(64, 48);
    std::atomic<bool> cancel{true};
    KernelControl control;
    control.cancel = &cancel;
    EXPECT_EQ(
        AutoDev_Run(sky.get(), AutoDev_Settings(AutoDevParams{}, sky->width, sky->height, false), &control),
        nullptr);
    ImagePtr copy(Image_Clone(sky.get()));
    EXPECT_FALSE(AutoDev_RunInto(copy.get(), copy.get(),
                                 AutoDev_Settings(AutoDevParams{}, copy->width, copy->height, false),
                                 &control));
    EXPECT_EQ(ImageDifference(sky.get(), copy.get()), "");
}

TEST(AutoDevPreview, OutsideTheRoiIsLightened) {
    ImagePtr image = MakeImage(10, 10, 30, [](int32_t, int32_t, int) { return 1000; });
    AutoDevParams p;
    p.roiX0 = 2;
    p.roiY0 = 2;
    p.roiX1 = 6;
    p.roiY1 = 6;
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
    const std::vector<int64_t> sortedIdx = [&] {
        std::vector<int64_t> v;
        for (size_t i = 0; i < lin.size(); i += 997) v.push_back(int64_t(i));
        return v;
    }();
    int64_t inversions = 0;
    for (size_t k = 1; k < sortedIdx.size(); ++k) {
        const size_t a = size_t(sortedIdx[k - 1]), b = size_t(sortedIdx[k]);
        if ((lin[a] < lin[b]) != (str[a] < str[b]) && lin[a] != lin[b] && str[a] != str[b]) ++inversions;
    }
    EXPECT_LT(inversions, int64_t(sortedIdx.size() / 20));
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
