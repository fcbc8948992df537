// The module list as data: every row's value text read back over its whole
// range, the texts and log blocks the forms show, the step options parsed from
// the rows, and steps run on image and mask through the list.
#include "modules/Module_List.h"
#include "modules/Pipeline.h"
#include "modules/autodev/AutoDev_Params.h"
#include "modules/bin/Bin_Params.h"
#include "modules/crop/Crop_Params.h"
#include "modules/rotate/Rotate_Params.h"

#include "ModuleTestImages.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <tuple>

namespace {

PipelineStep Parse(const std::string& option) {
    PipelineStep step;
    std::string error;
    EXPECT_TRUE(Pipeline_ParseStep(option, &step, &error)) << option << ": " << error;
    return step;
}

template <class Params>
const Params& As(const PipelineStep& step) {
    return *reinterpret_cast<const Params*>(step.params.bytes);
}

}  // namespace

// One walk over the list: modules are found by button and name, buttons,
// options and setters are unique, presets name their module's setters, and
// every row reads its own value text back over its whole range.
TEST(ModuleList, EntriesAreUniqueAndEveryRowReadsItsOwnValueTextBackOverItsWholeRange) {
    constexpr int32_t kWidth = 97, kHeight = 61;
    std::set<uint32_t> buttons;
    std::set<std::string> options;
    for (const ModuleDef* module : Module_List()) {
        EXPECT_TRUE(buttons.insert(module->buttonId).second) << module->name;
        EXPECT_TRUE(options.insert(module->option).second) << module->name;
        EXPECT_EQ(Module_FindByButton(module->buttonId), module);
        EXPECT_EQ(Module_FindByName(module->name), module);
        std::set<uint32_t> setters;
        for (const ModuleParam& row : module->params) {
            EXPECT_TRUE(setters.insert(row.setterId).second) << row.key;
            const int32_t hi = ModuleParams_Maximum(row, kWidth, kHeight);
            for (int32_t v = row.minimum; v <= hi; ++v) {
                const std::string text = ModuleParams_ValueText(row, v, kWidth, kHeight);
                int32_t back = -1;
                ASSERT_TRUE(ModuleParams_ParseValueText(row, text, kWidth, kHeight, &back))
                    << module->name << " " << row.key << " " << text;
                ASSERT_EQ(back, v) << module->name << " " << row.key << " " << text;
            }
            int32_t unused;
            EXPECT_FALSE(ModuleParams_ParseValueText(row, "nonsense", kWidth, kHeight, &unused));
        }
        for (const ParamPreset& preset : module->presets)
            EXPECT_TRUE(setters.count(preset.setterId)) << module->name;
    }
}

// The texts the forms and the log show, fixed by the modules' designs.
TEST(ModuleList, ValueTextsAndLogBlocks) {
    struct Case {
        const char* module;
        const char* option;
        int32_t width, height;
        const char* block;
    } cases[] = {
        {"Bin", "--bin", 0, 0,
         "--- Bin\nParameter [Scale] set to [(scale/noise reduction 50.00%)/(400.00%)/(+2.00 bits)]\n"},
        {"Bin", "--bin=10000", 0, 0,  // -2 * log2(1) is -0.0, printed after the format's "+"
         "--- Bin\nParameter [Scale] set to [(scale/noise reduction 100.00%)/(100.00%)/(+-0.00 bits)]\n"},
        {"Rotate", "--rotate=900", 0, 0, "--- Rotate\nParameter [Angle] set to [90.00]\n"},
        {"Crop", "--crop=10:20:89:59", 100, 80,
         "--- Crop\nParameter [X1] set to [10 pixels]\nParameter [Y1] set to [20 pixels]\n"
         "Parameter [X2] set to [90 pixels (-10)]\nParameter [Y2] set to [60 pixels (-20)]\n"},
        {"AutoDev", "--autodev", 100, 80,
         "--- AutoDev\nParameter [Detail Blur] set to [off]\n"
         "Parameter [Outside RoI Influence] set to [15 %]\nParameter [RoI X1] set to [0 pixels]\n"
         "Parameter [RoI Y1] set to [0 pixels]\nParameter [RoI X2] set to [100 pixels (-0)]\n"
         "Parameter [RoI Y2] set to [80 pixels (-0)]\nParameter [Curve Exponent] set to [1.00]\n"
         "Parameter [Tone Blend] set to [50 %]\n"},
    };
    for (const Case& c : cases) {
        const PipelineStep step = Parse(c.option);
        ASSERT_EQ(step.module, Module_FindByName(c.module));
        EXPECT_EQ(Module_LogBlock(*step.module, step.params.bytes, c.width, c.height), c.block) << c.option;
    }
}

TEST(PipelineParse, OptionsComeFromTheRows) {
    const AutoDevParams full =
        As<AutoDevParams>(Parse("--autodev=blur=490,curve=1000,tone=0,outside=100,roi=10:20:30:40"));
    EXPECT_EQ((std::vector<int32_t>{full.blur, full.outside, full.roiX0, full.roiY0, full.roiX1, full.roiY1,
                                    full.curve, full.tone}),
              (std::vector<int32_t>{490, 100, 10, 20, 30, 40, 1000, 0}));
    EXPECT_EQ(As<AutoDevParams>(Parse("--autodev")).roiX1, kParamLast);
    EXPECT_EQ(As<BinParams>(Parse("--bin=7071")).scale, 7071);
    EXPECT_EQ(As<RotateParams>(Parse("--rotate=3599")).angle, 3599);
    EXPECT_EQ(As<CropParams>(Parse("--crop=1:2:300:400")).y1, 400);
    EXPECT_EQ(Parse("--flip=h").module, Module_FindByButton(ModuleParams_Id("BtMH")));
    EXPECT_EQ(Parse("--flip=v").module, Module_FindByButton(ModuleParams_Id("BtMV")));
    EXPECT_TRUE(Pipeline_IsStepOption("--autodev"));
    EXPECT_FALSE(Pipeline_IsStepOption("--autodevx"));
    EXPECT_FALSE(Pipeline_IsStepOption("-o"));
    PipelineStep step;
    std::string error;
    for (const char* bad : {"--bin=10001", "--bin=-1", "--bin=", "--bin=5e3", "--rotate=3600",
                            "--autodev=blur=491", "--autodev=curve=1001", "--autodev=tone=101",
                            "--autodev=outside=-1", "--autodev=foo=1", "--autodev=", "--autodev=roi=1:2:3",
                            "--crop=1:2:3", "--crop=a:b:c:d", "--crop=-1:0:5:5", "--flip=x", "--sharpen=1"}) {
        EXPECT_FALSE(Pipeline_ParseStep(bad, &step, &error)) << bad;
        EXPECT_FALSE(error.empty()) << bad;
    }
    // The help states each fixed range once, from the rows.
    const std::string help = Pipeline_Help();
    for (const ModuleDef* module : Module_List()) {
        EXPECT_NE(help.find(std::string("--") + module->option), std::string::npos) << module->option;
        for (const ModuleParam& row : module->params) {
            if (row.extent != ParamExtent::Fixed) continue;
            EXPECT_NE(help.find(std::to_string(row.minimum) + ".." + std::to_string(row.maximum)),
                      std::string::npos)
                << row.key;
        }
    }
}

// Steps run through the list on an image and a mask of the test's own, as the
// batch runs them, the log blocks they write kept.
class PipelineRun : public testing::Test {
protected:
    ~PipelineRun() override {
        Image_Free(image_);
        Image_Free(mask_);
    }
    bool Run(const std::string& option, const KernelControl* control = nullptr) {
        return Pipeline_RunStep(Parse(option), &image_, &mask_, control, &log_);
    }

    ImageBuffer* image_ = nullptr;
    ImageBuffer* mask_ = nullptr;
    std::string log_;
};

TEST_F(PipelineRun, CropCutsImageAndMaskAndLogs) {
    image_ = MakeImage(50, 40, 30, [](int32_t x, int32_t y, int) { return y * 100 + x; }).release();
    mask_ = MakeImage(50, 40, 30, [](int32_t x, int32_t, int) { return x; }).release();
    ASSERT_TRUE(Run("--crop=30:25:10:5"));
    EXPECT_EQ(std::tuple(image_->width, image_->height, Pixel(image_, 0, 0, 0)), std::tuple(21, 21, 510));
    EXPECT_EQ(std::tuple(mask_->width, mask_->height, Pixel(mask_, 0, 0, 0)), std::tuple(21, 21, 10));
    EXPECT_EQ(log_.rfind("--- Crop\n", 0), 0u);
    // Corners past the image are clamped by the setters' ranges.
    ASSERT_TRUE(Run("--crop=0:0:999:999"));
    EXPECT_EQ(image_->width, 21);
}

TEST_F(PipelineRun, GeometrySteps) {
    image_ = MakeImage(60, 40, 30, [](int32_t x, int32_t y, int) { return y * 100 + x; }).release();
    ASSERT_TRUE(Run("--rotate=900"));
    EXPECT_EQ(std::pair(image_->width, image_->height), std::pair(40, 60));
    EXPECT_EQ(log_, "--- Rotate\nParameter [Angle] set to [90.00]\n");
    ASSERT_TRUE(Run("--bin=5000"));
    EXPECT_EQ(std::pair(image_->width, image_->height), std::pair(20, 30));
    ASSERT_TRUE(Run("--bin=0"));
    EXPECT_EQ(image_->width, 20);  // no result: unchanged
    EXPECT_TRUE(log_.empty());
    const int64_t corner = Pixel(image_, 0, 0, 0);
    ASSERT_TRUE(Run("--flip=h"));
    EXPECT_EQ(Pixel(image_, 0, 19, 0), corner);
    EXPECT_EQ(log_, "--- Mirror left-right\n");  // a block without parameters, for the replay
}

TEST_F(PipelineRun, AutoDevInPlaceWithItsLogBlock) {
    image_ = MakeImage(64, 48, 30, [](int32_t x, int32_t y, int c) {
                 return int64_t{20000000} + 100000 * ((x * 7 + y * 3) % 11) + 1000 * c;
             }).release();
    ASSERT_TRUE(Run("--autodev=blur=10,roi=5:5:40:30"));
    // The block as the module writes it (its texts are pinned in ValueTextsAndLogBlocks).
    EXPECT_EQ(log_, Module_LogBlock(*Module_FindByName("AutoDev"),
                                    Parse("--autodev=blur=10,roi=5:5:40:30").params.bytes, 64, 48));
    EXPECT_GT(Pixel(image_, 0, 10, 10), 20000000 * 4);
}

// Every kernel on either of its paths, AutoDev in place as the batch runs it.
TEST_F(PipelineRun, CancelledStepLeavesTheImage) {
    image_ = MakeImage(30, 20, 30, [](int32_t x, int32_t, int) { return x * 1000; }).release();
    ImagePtr before(Image_Clone(image_));
    std::atomic<bool> cancel{true};
    const KernelControl control{.cancel = &cancel};
    log_ = "stale";
    for (const char* option : {"--autodev", "--bin=5000", "--bin=7071", "--rotate=100", "--rotate=900"}) {
        EXPECT_FALSE(Run(option, &control)) << option;
        EXPECT_EQ(ImageDifference(image_, before.get()), "") << option;
        EXPECT_TRUE(log_.empty());
    }
}
