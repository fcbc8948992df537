// The questions a load raises, in order and with the buttons they offer, and
// what the answers do to the image and the processing log.
#include "formats/File_LoadQuestions.h"

#include "host/Shell_Log.h"
#include "image/Image.h"
#include "support/Files.h"
#include "support/TestImages.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// Answers every question in turn, "Type of dataset?" with the button
// `dataset` and every other one with its first; the titles asked.
std::vector<std::string> Walk(const LoadInfo& info, int dataset) {
    std::vector<std::string> titles;
    LoadAnswers answers;
    LoadQuestion q;
    while (File_NextLoadQuestion(info, answers, &q)) {
        titles.push_back(q.title);
        const int button = titles.back() == "Type of dataset?" ? dataset : 0;
        EXPECT_LT(size_t(button), q.buttons.size()) << q.title;
        File_AnswerLoadQuestion(&answers, q.id, button);
        if (titles.size() > 5) break;
    }
    return titles;
}

ImagePtr Grey(int64_t value, bool alpha) {
    ImagePtr image = MakeImage(4, 2, 30, [value](int32_t x, int32_t y, int) { return value + y * 4 + x; });
    if (alpha) {
        Image_AddAlpha(image.get());  // opaque
        image->alpha[0] = image->alpha[1] = 0;
    }
    return image;
}

}  // namespace

TEST(LoadQuestions, OrderAndButtonsFollowTheFile) {
    const LoadInfo greyFits{.reader = FileReaderKind::kFits, .grey = true};
    const LoadInfo rgbTiff{.reader = FileReaderKind::kTiff, .askDataGaps = true, .artefacts = true};
    const LoadInfo jpeg{.reader = FileReaderKind::kJpeg, .grey = true};
    struct Case {
        const LoadInfo* info;
        int dataset;  // the button pressed for "Type of dataset?"
        std::vector<std::string> titles;
    } cases[] = {
        {&greyFits, 0, {"Type of dataset?"}},
        {&greyFits, 1, {"Type of dataset?", "Reverse sRGB stretch?"}},
        {&rgbTiff, 1, {"Data gaps detected", "Possible stacking artifacts detected", "Type of dataset?"}},
        {&rgbTiff,
         2,
         {"Data gaps detected", "Possible stacking artifacts detected", "Type of dataset?",
          "Reverse sRGB stretch?"}},
        {&jpeg, 0, {"Reverse stretch?"}},
    };
    for (const Case& c : cases) EXPECT_EQ(Walk(*c.info, c.dataset), c.titles);

    LoadQuestion q;
    ASSERT_TRUE(File_NextLoadQuestion(greyFits, LoadAnswers{}, &q));
    // Compared as texts: the pointers differ when the linker keeps two copies.
    EXPECT_EQ(std::vector<std::string>(q.buttons.begin(), q.buttons.end()),
              (std::vector<std::string>{"Linear", "Non-linear sRGB source"}));
    EXPECT_EQ(std::string(q.text).rfind("Have the pixels in this dataset been non-linearly stretched\n\n", 0),
              0u);
    ASSERT_TRUE(File_NextLoadQuestion(rgbTiff, LoadAnswers{.dataGaps = 0, .artefacts = 0}, &q));
    EXPECT_EQ(q.buttons.size(), 3u);
    EXPECT_STREQ(q.buttons[1], "Linear, from OSC/DSLR with Bayer matrix and not white balanced");
    ASSERT_TRUE(File_NextLoadQuestion(jpeg, LoadAnswers{}, &q));
    EXPECT_STREQ(q.buttons[0], "Attempt to reverse stretch, activate tracking");
    for (bool grey : {true, false})
        for (DatasetAnswer a : {DatasetAnswer::kLinear, DatasetAnswer::kNonLinearSrgb})
            EXPECT_EQ(File_DatasetAnswerOf(File_DatasetButton(a, grey), grey), a);
}

TEST(LoadQuestions, AnswersActAndAreLoggedInOrder) {
    TempDir dir;
    EnvScope stateDir("PELLUCIDA_STATE_DIR", dir.Path().string());
    LoadInfo info{.reader = FileReaderKind::kFits, .grey = true, .askDataGaps = true};
    ImagePtr image = Grey(int64_t{1} << 28, true);
    // Interpolate (the gaps take the median of the rest, alpha stays), non-linear,
    // reversed (linear again, tracking on).
    LoadAnswers answers{.dataGaps = 0, .dataset = 1, .reverse = 0};
    const LoadOutcome outcome = File_ApplyLoadAnswers(image.get(), info, answers);
    EXPECT_TRUE(outcome.linear && outcome.tracking);
    ASSERT_NE(image->alpha, nullptr);
    EXPECT_EQ(image->red[0], image->red[1]);
    EXPECT_LT(image->red[5], (int64_t{1} << 28) + 5);  // the sRGB curve undone darkens mid-tones
    const std::vector<uint8_t> bytes = ReadFileBytes(dir.Path() / kShellLogFileName);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()),
              "Type of Data: Modified and not linear\nImage size is 4 x 2\n");

    answers.reverse = 1;  // kept stretched: tracking off, samples untouched
    ImagePtr kept = Grey(int64_t{1} << 28, false);
    info.askDataGaps = false;
    const LoadOutcome off = File_ApplyLoadAnswers(kept.get(), info, answers);
    EXPECT_FALSE(off.linear || off.tracking);
    EXPECT_EQ(kept->red[5], (int64_t{1} << 28) + 5);
}
