// The value-label members: each one's text at the positions that show its
// wording, and each text leading back to its position.
#include "modules/common/ValueLabel_Format.h"

#include <gtest/gtest.h>

namespace {

using K = ValueLabelKind;

struct Case {
    K kind;
    uint32_t position, maximum;
    int32_t w, h;
    const char* text;
    bool guessable;  // the text alone gives the position back
};

const Case kCases[] = {
    {K::TenthPixelsFromOne, 0, 0, 0, 0, "1.0 pixels", true},
    {K::TenthPixelsFromOne, 90, 0, 0, 0, "10.0 pixels", true},
    {K::SignedPixels, 50, 100, 0, 0, "0.0 pixels", true},
    {K::SignedPixels, 40, 100, 0, 0, "-1.0 pixels", true},
    {K::Minutes, 65, 0, 0, 0, "1h05m (65m) (3900s)", true},
    {K::Minutes, 0, 0, 0, 0, "0h00m (0m) (0s)", true},
    {K::SquareSize, 0, 0, 0, 0, "128 x 128 pixels", true},
    {K::SquareSize, 3, 0, 0, 0, "1024 x 1024 pixels", true},
    {K::ShadowHighlight, 90, 200, 0, 0, "20% shadow dominant", true},
    {K::ShadowHighlight, 100, 200, 0, 0, "balanced", true},
    {K::ShadowHighlight, 130, 200, 0, 0, "60% highlight dominant", true},
    {K::NoiseDetail, 100, 0, 0, 0, "1.00 (optimal noise and detail)", true},
    {K::NoiseDetail, 99, 0, 0, 0, "0.99 (noisier, extra detail)", true},
    {K::NoiseDetail, 150, 0, 0, 0, "1.50 (smoother, less detail)", true},
    {K::Plain, 7, 0, 0, 0, "7", true},
    {K::PlainPlusOne, 7, 0, 0, 0, "8", true},
    {K::Pixels, 12, 0, 0, 0, "12 pixels", true},
    {K::PixelsPlusOne, 12, 0, 0, 0, "13 pixels", true},
    {K::PixelsFromCentreX, 10, 0, 101, 50, "-40 pixels", true},
    {K::PixelsFromCentreY, 10, 0, 101, 50, "-15 pixels", true},
    {K::PixelsAndRestX, 9, 0, 100, 60, "10 pixels (-90)", true},
    {K::PixelsAndRestY, 9, 0, 100, 60, "10 pixels (-50)", true},
    {K::Percent, 42, 0, 0, 0, "42 %", true},
    {K::PercentSplit, 30, 100, 0, 0, "70% / 30%", true},
    {K::TenthsFromOne, 5, 0, 0, 0, "1.5", true},
    {K::TenthsFromOneFine, 5, 0, 0, 0, "1.50", true},
    {K::Tenths, 25, 0, 0, 0, "2.50", true},
    {K::Hundredths, 5, 0, 0, 0, "0.05", true},
    {K::HundredthsFromOne, 5, 0, 0, 0, "1.05", true},
    {K::SignedPercent, 9950, 0, 0, 0, "-0.50 %", true},
    {K::SignedPercent, 10000, 0, 0, 0, "0.00 %", true},
    // Members whose figures the caller computes (25.4, 30.9, 1.5 here).
    {K::Millimetres, 4, 0, 0, 0, "25mm / 1.00\"", false},
    {K::MillimetresFine, 4, 0, 0, 0, "25.4mm / 1.00\"", false},
    {K::ComputedPercent, 4, 0, 0, 0, "0.25 %", false},
    {K::FieldOfView, 4, 0, 0, 0, "5 Arc Minutes (25' x 30')", true},
    {K::DenoiseScale, 4, 0, 0, 0, "(scale/noise reduction 25.40%)/(30.90%)/(+1.50 bits)", false},
};

}  // namespace

TEST(ValueLabel, EveryMemberSaysWhatThePositionMeansAndLeadsBack) {
    for (const Case& c : kCases) {
        const ValueLabelInput input{c.position, c.maximum, c.w, c.h, {25.4, 30.9, 1.5}};
        EXPECT_EQ(ValueLabel_Text(c.kind, input), c.text) << int(c.kind);
        int64_t back = -1;
        if (c.guessable) {
            EXPECT_TRUE(ValueLabel_Guess(c.kind, c.text, c.maximum, c.w, c.h, &back)) << c.text;
            EXPECT_EQ(back, c.position) << c.text;
        }
    }
}

TEST(ValueLabel, ShortBufferIsTruncatedAndTerminated) {
    ValueLabelInput input;
    input.position = 65;
    char small[6];
    EXPECT_EQ(ValueLabel_Format(ValueLabelKind::Minutes, input, small, sizeof small), 5u);
    EXPECT_STREQ(small, "1h05m");
}
