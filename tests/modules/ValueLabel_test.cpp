// The value-label members print exactly the program's wording.
#include "modules/common/ValueLabel_Format.h"

#include <gtest/gtest.h>

namespace {

std::string Text(ValueLabelKind kind, uint32_t position, uint32_t maximum = 0, int32_t w = 0, int32_t h = 0) {
    ValueLabelInput input;
    input.position = position;
    input.maximum = maximum;
    input.extentW = w;
    input.extentH = h;
    return ValueLabel_Text(kind, input);
}

TEST(ValueLabel, TenthPixelsStartAtOnePixel) {
    EXPECT_EQ(Text(ValueLabelKind::TenthPixelsFromOne, 0), "1.0 pixels");
    EXPECT_EQ(Text(ValueLabelKind::TenthPixelsFromOne, 90), "10.0 pixels");
}

TEST(ValueLabel, SignedPixelsAreZeroAtMidTravel) {
    EXPECT_EQ(Text(ValueLabelKind::SignedPixels, 50, 100), "0.0 pixels");
    EXPECT_EQ(Text(ValueLabelKind::SignedPixels, 40, 100), "-1.0 pixels");
    EXPECT_EQ(Text(ValueLabelKind::SignedPixels, 100, 100), "5.0 pixels");
}

TEST(ValueLabel, MinutesShowHoursMinutesAndSeconds) {
    EXPECT_EQ(Text(ValueLabelKind::Minutes, 65), "1h05m (65m) (3900s)");
    EXPECT_EQ(Text(ValueLabelKind::Minutes, 0), "0h00m (0m) (0s)");
}

TEST(ValueLabel, SquareSizeDoublesPerStep) {
    EXPECT_EQ(Text(ValueLabelKind::SquareSize, 0), "128 x 128 pixels");
    EXPECT_EQ(Text(ValueLabelKind::SquareSize, 3), "1024 x 1024 pixels");
}

TEST(ValueLabel, ShadowHighlightAroundTheMiddle) {
    EXPECT_EQ(Text(ValueLabelKind::ShadowHighlight, 90, 200), "20% shadow dominant");
    EXPECT_EQ(Text(ValueLabelKind::ShadowHighlight, 100, 200), "balanced");
    EXPECT_EQ(Text(ValueLabelKind::ShadowHighlight, 130, 200), "60% highlight dominant");
}

TEST(ValueLabel, NoiseDetailWordsFollowThePosition) {
    EXPECT_EQ(Text(ValueLabelKind::NoiseDetail, 100), "1.00 (optimal noise and detail)");
    EXPECT_EQ(Text(ValueLabelKind::NoiseDetail, 99), "0.99 (noisier, extra detail)");
    EXPECT_EQ(Text(ValueLabelKind::NoiseDetail, 0), "0.00 (noisier, extra detail)");
    EXPECT_EQ(Text(ValueLabelKind::NoiseDetail, 150), "1.50 (smoother, less detail)");
}

TEST(ValueLabel, IntegerMembers) {
    EXPECT_EQ(Text(ValueLabelKind::Plain, 7), "7");
    EXPECT_EQ(Text(ValueLabelKind::PlainPlusOne, 7), "8");
    EXPECT_EQ(Text(ValueLabelKind::Pixels, 12), "12 pixels");
    EXPECT_EQ(Text(ValueLabelKind::PixelsPlusOne, 12), "13 pixels");
    EXPECT_EQ(Text(ValueLabelKind::PixelsFromCentreX, 10, 0, 101, 50), "-40 pixels");
    EXPECT_EQ(Text(ValueLabelKind::PixelsFromCentreY, 10, 0, 101, 50), "-15 pixels");
    EXPECT_EQ(Text(ValueLabelKind::PixelsAndRestX, 9, 0, 100, 60), "10 pixels (-90)");
    EXPECT_EQ(Text(ValueLabelKind::PixelsAndRestY, 9, 0, 100, 60), "10 pixels (-50)");
    EXPECT_EQ(Text(ValueLabelKind::Percent, 42), "42 %");
    EXPECT_EQ(Text(ValueLabelKind::PercentSplit, 30, 100), "70% / 30%");
}

TEST(ValueLabel, DecimalMembers) {
    EXPECT_EQ(Text(ValueLabelKind::TenthsFromOne, 5), "1.5");
    EXPECT_EQ(Text(ValueLabelKind::TenthsFromOneFine, 5), "1.50");
    EXPECT_EQ(Text(ValueLabelKind::Tenths, 25), "2.50");
    EXPECT_EQ(Text(ValueLabelKind::Hundredths, 5), "0.05");
    EXPECT_EQ(Text(ValueLabelKind::HundredthsFromOne, 5), "1.05");
    EXPECT_EQ(Text(ValueLabelKind::SignedPercent, 9950), "-0.50 %");
    EXPECT_EQ(Text(ValueLabelKind::SignedPercent, 10000), "0.00 %");
}

TEST(ValueLabel, MembersWithCallerFigures) {
    ValueLabelInput input;
    input.position = 4;
    input.figures[0] = 25.4;
    input.figures[1] = 30.9;
    input.figures[2] = 1.5;
    EXPECT_EQ(ValueLabel_Text(ValueLabelKind::Millimetres, input), "25mm / 1.00\"");
    EXPECT_EQ(ValueLabel_Text(ValueLabelKind::MillimetresFine, input), "25.4mm / 1.00\"");
    EXPECT_EQ(ValueLabel_Text(ValueLabelKind::ComputedPercent, input), "0.25 %");
    EXPECT_EQ(ValueLabel_Text(ValueLabelKind::FieldOfView, input), "5 Arc Minutes (25' x 30')");
    EXPECT_EQ(ValueLabel_Text(ValueLabelKind::DenoiseScale, input),
              "(scale/noise reduction 25.40%)/(30.90%)/(+1.50 bits)");
}

TEST(ValueLabel, ShortBufferIsTruncatedAndTerminated) {
    ValueLabelInput input;
    input.position = 65;
    char small[6];
    EXPECT_EQ(ValueLabel_Format(ValueLabelKind::Minutes, input, small, sizeof small), 5u);
    EXPECT_STREQ(small, "1h05m");
}

}  // namespace
