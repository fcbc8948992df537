// The balance of one-shot-colour data: matched sky backgrounds, stars made
// white without scaling any channel up, grey data left alone, and the real
// debayered stack coming out neutral.
#include "image/Image.h"
#include "image/Image_Balance.h"

#include "formats/File_Load.h"
#include "formats/Fits_Read.h"
#include "support/TestData.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

// A 200 x 200 sky at (1000, 2000, 800) with a little deterministic noise and
// 100 "stars" of excess (2, 4, 1) x 3000 on single pixels.
ImagePtr GreenSky() {
    return MakeImage(200, 200, 16, [](int32_t x, int32_t y, int c) {
        const int64_t sky[3] = {1000, 2000, 800}, star[3] = {6000, 12000, 3000};
        const bool isStar = x % 20 == 7 && y % 20 == 11;
        return sky[c] + ((x * 7 + y * 13) % 5) - 2 + (isStar ? star[c] : 0);  // with a little noise
    });
}

int64_t ChannelMedian(const ImageBuffer* image, int c) {
    const int64_t* plane = c == 0 ? image->red : c == 1 ? image->green : image->blue;
    std::vector<int64_t> v(plane, plane + int64_t{image->width} * image->height);
    std::nth_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(v.size() / 2), v.end());
    return v[v.size() / 2];
}

}  // namespace

TEST(ImageBalance, MatchesBackgroundsAndWhitensStarsWithoutGainWhateverSaturatedOrFaintPixels) {
    for (bool distractions : {false, true}) {
        SCOPED_TRACE(distractions ? "saturated green cores and faint red wisps" : "stars on the sky only");
        ImagePtr image = GreenSky();
        // Saturated green cores and faint red wisps just above the noise do not
        // decide the colour.
        for (int32_t x = 0; x < 200 && distractions; ++x) {
            if (x % 2 == 0) image->green[50 * 200 + x] = image->maxValue;
            image->red[120 * 200 + x] += 4;
        }
        ColourBalance balance;
        ASSERT_TRUE(Image_MeasureOscBalance(image.get(), &balance));
        EXPECT_EQ(std::vector<int64_t>(std::begin(balance.background), std::end(balance.background)),
                  (std::vector<int64_t>{1000, 2000, 800}));
        EXPECT_EQ(balance.signalPixels, 100);
        // The weakest channel (blue) keeps its scale; the others come down to it.
        EXPECT_DOUBLE_EQ(balance.gain[2], 1.0);
        EXPECT_NEAR(balance.gain[0], 0.5, 1e-9);
        EXPECT_NEAR(balance.gain[1], 0.25, 1e-9);

        Image_ApplyBalance(image.get(), balance);
        for (int c = 0; c < 3; ++c) EXPECT_EQ(ChannelMedian(image.get(), c), 800) << "channel " << c;
        // A star pixel (7, 11) with noise (49 + 143) % 5 - 2 = 0: excess 3000 in every channel.
        const int64_t i = 11 * 200 + 7;
        EXPECT_EQ((std::vector<int64_t>{image->red[i], image->green[i], image->blue[i]}),
                  std::vector<int64_t>(3, 3800));
    }
}

TEST(ImageBalance, WithoutSignalOnlyTheBackgroundsAreMatched) {
    ImagePtr image = MakeImage(64, 64, 16, [](int32_t x, int32_t y, int c) {
        const int64_t base[3] = {500, 900, 400};
        return base[c] + (y * 64 + x) % 3;
    });
    ColourBalance balance;
    ASSERT_TRUE(Image_MeasureOscBalance(image.get(), &balance));
    EXPECT_EQ(balance.signalPixels, 0);
    for (double g : balance.gain) EXPECT_EQ(g, 1.0);
    Image_ApplyBalance(image.get(), balance);
    EXPECT_EQ((std::vector<int64_t>{image->red[0], image->green[0], image->blue[5]}),
              (std::vector<int64_t>{400, 400, 402}));
}

TEST(ImageBalance, OnlyTheOscAnswerOnColourDataTouchesTheSamples) {
    ImagePtr grey(Image_Create(10, 10));
    for (int64_t i = 0; i < 100; ++i) grey->red[i] = grey->green[i] = grey->blue[i] = i * 10;
    ColourBalance balance;
    EXPECT_FALSE(Image_MeasureOscBalance(grey.get(), &balance));
    File_ApplyDatasetAnswer(grey.get(), DatasetAnswer::kLinearOsc, true);
    for (int64_t i = 0; i < 100; ++i) EXPECT_EQ(grey->green[i], i * 10);

    ImagePtr image = GreenSky();
    ImagePtr before(Image_Clone(image.get()));
    File_ApplyDatasetAnswer(image.get(), DatasetAnswer::kLinear, false);
    File_ApplyDatasetAnswer(image.get(), DatasetAnswer::kNonLinearSrgb, false);
    EXPECT_TRUE(std::equal(image->green, image->green + 200 * 200, before->green));
    File_ApplyDatasetAnswer(image.get(), DatasetAnswer::kLinearOsc, false);
    EXPECT_EQ(ChannelMedian(image.get(), 1), 800);
}

TEST(ImageBalance, TheDebayeredM94StackComesOutNeutral) {
    PELLUCIDA_REQUIRE_DATA(path, "derived/siril_M94_32x10s_rgb_uint16.fit");
    ImagePtr stack(Fits_Read(path.c_str()));
    ASSERT_TRUE(stack);
    // Not white balanced: the green sky stands well above the other two.
    EXPECT_GT(ChannelMedian(stack.get(), 1), ChannelMedian(stack.get(), 0) * 3 / 2);
    ColourBalance balance;
    ASSERT_TRUE(Image_MeasureOscBalance(stack.get(), &balance));
    EXPECT_GT(balance.signalPixels, 100);  // its stars and the galaxy's core
    EXPECT_LT(balance.gain[1], balance.gain[0]);
    EXPECT_LT(balance.gain[1], balance.gain[2]);
    Image_ApplyBalance(stack.get(), balance);
    // The sky is grey within a tenth of a per cent of the full scale.
    const int64_t blue = ChannelMedian(stack.get(), 2), tolerance = stack->maxValue / 1000;
    EXPECT_NEAR(ChannelMedian(stack.get(), 0), blue, tolerance);
    EXPECT_NEAR(ChannelMedian(stack.get(), 1), blue, tolerance);
}
