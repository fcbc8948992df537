// The batch steps: option parsing with the modules' own ranges, and running a
// step on image and mask with its log block.
#include "modules/Pipeline.h"

#include "ModuleTestImages.h"

#include <gtest/gtest.h>

#include <atomic>

namespace {

PipelineStep Parse(const std::string& option) {
    PipelineStep step;
    std::string error;
    EXPECT_TRUE(Pipeline_ParseStep(option, &step, &error)) << option << ": " << error;
    return step;
}

struct ImagePair {
    ImageBuffer* image = nullptr;
    ImageBuffer* mask = nullptr;
    ~ImagePair() {
        Image_Free(image);
        Image_Free(mask);
    }
};

}  // namespace

TEST(PipelineParse, AutoDevDefaultsAndList) {
    const PipelineStep plain = Parse("--autodev");
    EXPECT_EQ(plain.kind, PipelineStepKind::AutoDev);
    EXPECT_EQ(plain.autodev.blur, 0);
    EXPECT_EQ(plain.autodev.curve, 100);
    EXPECT_EQ(plain.autodev.tone, 50);
    EXPECT_EQ(plain.autodev.outside, 15);
    EXPECT_EQ(plain.autodev.roiX1, -1);
    const PipelineStep full = Parse("--autodev=blur=490,curve=1000,tone=0,outside=100,roi=10:20:30:40");
    EXPECT_EQ(full.autodev.blur, 490);
    EXPECT_EQ(full.autodev.curve, 1000);
    EXPECT_EQ(full.autodev.tone, 0);
    EXPECT_EQ(full.autodev.outside, 100);
    EXPECT_EQ(full.autodev.roiX0, 10);
    EXPECT_EQ(full.autodev.roiY1, 40);
}

TEST(PipelineParse, OtherSteps) {
    EXPECT_EQ(Parse("--bin=7071").bin.scale, 7071);
    EXPECT_EQ(Parse("--rotate=3599").rotate.angle, 3599);
    const PipelineStep crop = Parse("--crop=1:2:300:400");
    EXPECT_EQ(crop.kind, PipelineStepKind::Crop);
    EXPECT_EQ(crop.crop.x1, 300);
    EXPECT_EQ(crop.crop.y1, 400);
    EXPECT_EQ(Parse("--flip=h").kind, PipelineStepKind::FlipHorizontal);
    EXPECT_EQ(Parse("--flip=v").kind, PipelineStepKind::FlipVertical);
    EXPECT_TRUE(Pipeline_IsStepOption("--autodev"));
    EXPECT_FALSE(Pipeline_IsStepOption("--autodevx"));
    EXPECT_FALSE(Pipeline_IsStepOption("-o"));
}

TEST(PipelineParse, RejectsOutOfRangeAndMalformedValues) {
    PipelineStep step;
    std::string error;
    for (const char* bad : {"--bin=10001", "--bin=-1", "--bin=", "--bin=5e3", "--rotate=3600",
                            "--autodev=blur=491", "--autodev=curve=1001", "--autodev=tone=101",
                            "--autodev=outside=-1", "--autodev=foo=1", "--autodev=", "--autodev=roi=1:2:3",
                            "--crop=1:2:3", "--crop=a:b:c:d", "--crop=-1:0:5:5", "--flip=x", "--sharpen=1"}) {
        EXPECT_FALSE(Pipeline_ParseStep(bad, &step, &error)) << bad;
        EXPECT_FALSE(error.empty()) << bad;
    }
}

TEST(PipelineRun, CropCutsImageAndMaskAndLogs) {
    ImagePair p;
    p.image = MakeImage(50, 40, 30, [](int32_t x, int32_t y, int) { return y * 100 + x; }).release();
    p.mask = MakeImage(50, 40, 30, [](int32_t x, int32_t, int) { return x; }).release();
    std::string log;
    ASSERT_TRUE(Pipeline_RunStep(Parse("--crop=30:25:10:5"), &p.image, &p.mask, nullptr, &log));
    EXPECT_EQ(p.image->width, 21);
    EXPECT_EQ(p.image->height, 21);
    EXPECT_EQ(Pixel(p.image, 0, 0, 0), 510);
    EXPECT_EQ(p.mask->width, 21);
    EXPECT_EQ(Pixel(p.mask, 0, 0, 0), 10);
    EXPECT_EQ(log.rfind("--- Crop\n", 0), 0u);
    // Corners past the image are clamped by the setters' ranges.
    ASSERT_TRUE(Pipeline_RunStep(Parse("--crop=0:0:999:999"), &p.image, &p.mask, nullptr, &log));
    EXPECT_EQ(p.image->width, 21);
}

TEST(PipelineRun, GeometrySteps) {
    ImagePair p;
    p.image = MakeImage(60, 40, 30, [](int32_t x, int32_t y, int) { return y * 100 + x; }).release();
    std::string log;
    ASSERT_TRUE(Pipeline_RunStep(Parse("--rotate=900"), &p.image, &p.mask, nullptr, &log));
    EXPECT_EQ(p.image->width, 40);
    EXPECT_EQ(p.image->height, 60);
    EXPECT_EQ(log, "--- Rotate\nParameter [Angle] set to [90.00]\n");
    ASSERT_TRUE(Pipeline_RunStep(Parse("--bin=5000"), &p.image, &p.mask, nullptr, &log));
    EXPECT_EQ(p.image->width, 20);
    EXPECT_EQ(p.image->height, 30);
    ASSERT_TRUE(Pipeline_RunStep(Parse("--bin=0"), &p.image, &p.mask, nullptr, &log));
    EXPECT_EQ(p.image->width, 20);  // no result: unchanged
    EXPECT_TRUE(log.empty());
    const int64_t corner = Pixel(p.image, 0, 0, 0);
    ASSERT_TRUE(Pipeline_RunStep(Parse("--flip=h"), &p.image, &p.mask, nullptr, &log));
    EXPECT_EQ(Pixel(p.image, 0, 19, 0), corner);
    EXPECT_TRUE(log.empty());
}

TEST(PipelineRun, AutoDevInPlaceWithItsLogBlock) {
    ImagePair p;
    p.image = MakeImage(64, 48, 30, [](int32_t x, int32_t y, int c) {
                  return int64_t{20000000} + 100000 * ((x * 7 + y * 3) % 11) + 1000 * c;
              }).release();
    std::string log;
    ASSERT_TRUE(Pipeline_RunStep(Parse("--autodev=blur=10,roi=5:5:40:30"), &p.image, &p.mask, nullptr, &log));
    EXPECT_EQ(log,
              "--- AutoDev\n"
              "Parameter [Detail Blur] set to [2.0 pixels]\n"
              "Parameter [Outside RoI Influence] set to [15 %]\n"
              "Parameter [RoI X1] set to [5 pixels]\n"
              "Parameter [RoI Y1] set to [5 pixels]\n"
              "Parameter [RoI X2] set to [41 pixels (-23)]\n"
              "Parameter [RoI Y2] set to [31 pixels (-17)]\n"
              "Parameter [Curve Exponent] set to [1.00]\n"
              "Parameter [Tone Blend] set to [50 %]\n");
    EXPECT_GT(Pixel(p.image, 0, 10, 10), 20000000 * 4);
}

TEST(PipelineRun, CancelledStepLeavesTheImage) {
    ImagePair p;
    p.image = MakeImage(30, 20, 30, [](int32_t x, int32_t, int) { return x * 1000; }).release();
    ImagePtr before(Image_Clone(p.image));
    std::atomic<bool> cancel{true};
    KernelControl control;
    control.cancel = &cancel;
    std::string log = "stale";
    for (const char* option : {"--autodev", "--bin=7071", "--rotate=100"}) {
        EXPECT_FALSE(Pipeline_RunStep(Parse(option), &p.image, &p.mask, &control, &log)) << option;
        EXPECT_EQ(ImageDifference(p.image, before.get()), "") << option;
        EXPECT_TRUE(log.empty());
    }
}
