// Stereo: the views move each pixel by its depth exactly, nearer pixels cover
// farther ones and the gaps fill from the background side; the depth map puts
// a bright smooth region in front of the sky and a star in front of its
// surroundings as far as the stand-out asks; a cancelled run gives nothing.
// The previews and the setters' settings show in the stereo form's reviewed
// pictures (ShellTest.StereoFormPreviewsAndExports).
#include "modules/stereo/Stereo_Kernel.h"

#include "ModuleTestImages.h"

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

namespace {

// The source column each output column shows (from the red samples).
std::vector<int64_t> Columns(const ImageBuffer* view) {
    std::vector<int64_t> columns;
    for (int32_t x = 0; x < view->width; ++x) columns.push_back(Pixel(view, 0, x, 0) / 1000);
    return columns;
}

std::vector<int64_t> Range(int64_t first, int64_t last) {
    std::vector<int64_t> r;
    for (int64_t v = first; v <= last; ++v) r.push_back(v);
    return r;
}

std::vector<int64_t> Join(std::initializer_list<std::vector<int64_t>> parts) {
    std::vector<int64_t> all;
    for (const auto& p : parts) all.insert(all.end(), p.begin(), p.end());
    return all;
}

}  // namespace

TEST(StereoViews, MoveByDepthCoverFartherPixelsAndFillFromTheBackground) {
    struct Case {
        const char* name;
        int64_t (*depth)(int32_t x);
        std::vector<int64_t> left, right;
    } cases[] = {
        {"all at the back: unchanged", [](int32_t) { return int64_t{0}; }, Range(0, 199), Range(0, 199)},
        {"all at the front: moved by 3, the edges repeated", [](int32_t) { return kStereoDepthMax; },
         Join({{0, 0, 0}, Range(0, 196)}), Join({Range(3, 199), {199, 199, 199}})},
        {"half depth: 1.5 rounds to 2", [](int32_t) { return kStereoDepthMax / 2 + 1; },
         Join({{0, 0}, Range(0, 197)}), Join({Range(2, 199), {199, 199}})},
        // A near block at 50..59 on a far background: it covers the background
        // on one side and uncovers it on the other, filled from the background.
        {"a near block", [](int32_t x) { return x >= 50 && x < 60 ? kStereoDepthMax : int64_t{0}; },
         Join({Range(0, 49), {49, 49, 49}, Range(50, 59), Range(63, 199)}),
         Join({Range(0, 46), Range(50, 59), {60, 60, 60}, Range(60, 199)})},
    };
    // One row whose samples name their column, and the depth map a function of the column.
    ImagePtr image = MakeImage(200, 1, 30, [](int32_t x, int32_t, int c) { return 1000 * x + c; });
    StereoSettings full;
    full.strength = 1.0;  // 200 columns: a parallax of 6, each view moved by 3 at the front
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ImagePtr depth =
            MakeImage(200, 1, kStereoDepthBits, [&](int32_t x, int32_t, int) { return c.depth(x); });
        ImagePtr left, right;
        ASSERT_TRUE(Stereo_Views(image.get(), depth.get(), full, nullptr, &left, &right));
        EXPECT_EQ(Columns(left.get()), c.left);
        EXPECT_EQ(Columns(right.get()), c.right);
        EXPECT_EQ(Pixel(left.get(), 2, 100, 0) % 1000, 2);  // every channel follows its column
    }
}

// A flat sky with a broad bright glow left of centre, a star on the open sky
// and one on the glow; linear and faint, as a stack is.
class StereoDepth : public testing::Test {
protected:
    static constexpr int32_t kW = 240, kH = 160;
    static constexpr int32_t kGlowX = 80, kGlowY = 80, kStarX = 190, kStarY = 40;
    ImagePtr image = MakeImage(kW, kH, 30, [](int32_t x, int32_t y, int c) {
        const double glow = std::exp(-((x - kGlowX) * (x - kGlowX) + (y - kGlowY) * (y - kGlowY)) / 1800.0);
        const double star = std::exp(-((x - kStarX) * (x - kStarX) + (y - kStarY) * (y - kStarY)) / 2.0);
        const double noise =
            double(TestHash(uint64_t(y) * 977 + uint64_t(x) * 3 + uint64_t(c)) % 1000) * 1e-6;
        return int64_t((0.02 + 0.05 * glow + 0.4 * star + noise) * 1073741823.0);
    });
};

TEST_F(StereoDepth, TheGlowIsInFrontOfTheSkyAndAStarStandsOutAsFarAsAsked) {
    StereoSettings s;
    s.standOut = 1.0;
    ImagePtr depth(Stereo_DepthMap(image.get(), s, nullptr));
    ASSERT_TRUE(depth);
    EXPECT_EQ(std::tuple(depth->width, depth->height, depth->bitDepth, depth->maxValue, depth->mono),
              std::tuple(kW, kH, uint16_t(kStereoDepthBits), kStereoDepthMax, 1));
    EXPECT_EQ(Pixel(depth.get(), 1, 17, 23), Pixel(depth.get(), 0, 17, 23));  // grey
    EXPECT_GT(Pixel(depth.get(), 0, kGlowX, kGlowY), kStereoDepthMax * 9 / 10);
    EXPECT_LT(Pixel(depth.get(), 0, kW - 1, kH - 1), kStereoDepthMax / 4);  // the far corner
    // The star is at the front; the sky beside it stays back.
    EXPECT_GT(Pixel(depth.get(), 0, kStarX, kStarY), kStereoDepthMax * 9 / 10);
    EXPECT_LT(Pixel(depth.get(), 0, kStarX + 10, kStarY), kStereoDepthMax / 3);

    // How far the star comes forward is the stand-out's share of the way
    // from its surroundings' depth (stand-out 0) to the front.
    int64_t at[3];
    for (int i = 0; i < 3; ++i) {
        s.standOut = 0.5 * i;
        ImagePtr d(Stereo_DepthMap(image.get(), s, nullptr));
        ASSERT_TRUE(d);
        at[i] = Pixel(d.get(), 0, kStarX, kStarY);
    }
    EXPECT_LT(at[0], kStereoDepthMax / 3);
    EXPECT_NEAR(at[1], (at[0] + kStereoDepthMax) / 2, 1);
    EXPECT_EQ(at[2], kStereoDepthMax);
}

TEST_F(StereoDepth, ACancelledRunGivesNothing) {
    const std::atomic<bool> cancel{true};
    const KernelControl control{&cancel, nullptr, nullptr};
    const StereoSettings s;
    EXPECT_EQ(Stereo_DepthMap(image.get(), s, &control), nullptr);
    EXPECT_EQ(Stereo_Preview(image.get(), s, &control), nullptr);
    ImagePtr depth(Stereo_DepthMap(image.get(), s, nullptr)), left, right;
    EXPECT_FALSE(Stereo_Views(image.get(), depth.get(), s, &control, &left, &right));
    EXPECT_EQ(left, nullptr);
}
