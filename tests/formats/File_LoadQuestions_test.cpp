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

struct Asked {
    std::vector<std::string> titles;
    LoadAnswers answers;
};

// Answers every question with the button given for it (by title), in turn.
Asked Walk(const LoadInfo& info, const std::vector<std::pair<std::string, int>>& buttons) {
    Asked asked;
    LoadQuestion q;
    while (File_NextLoadQuestion(info, asked.answers, &q)) {
        asked.titles.push_back(q.title);
        int button = 0;
        for (const auto& [title, index] : buttons)
            if (title == q.title) button = index;
        EXPECT_LT(size_t(button), q.buttons.size()) << q.title;
        File_AnswerLoadQuestion(&asked.answers, q.id, button);
        if (asked.titles.size() > 5) break;
    }
    return asked;
}

ImagePtr Grey(int64_t value, bool alpha) {
    ImagePtr image = MakeImage(4, 2, 30, [value](int32_t x, int32_t y, int) { return value + y * 4 + x; });
    if (alpha) {
        Image_AddAlpha(image.get());
        for (int32_t i = 0; i < 8; ++i)
            image->alpha[(i / 4) * image->stride + i % 4] = i < 2 ? 0 : image->maxValue;
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
        std::vector<std::pair<std::string, int>> buttons;
        std::vector<std::string> titles;
    } cases[] = {
        {&greyFits, {}, {"Type of dataset?"}},
        {&greyFits, {{"Type of dataset?", 1}}, {"Type of dataset?", "Reverse sRGB stretch?"}},
        {&rgbTiff,
         {{"Type of dataset?", 1}},
         {"Data gaps detected", "Possible stacking artifacts detected", "Type of dataset?"}},
        {&rgbTiff,
         {{"Type of dataset?", 2}},
         {"Data gaps detected", "Possible stacking artifacts detected", "Type of dataset?",
          "Reverse sRGB stretch?"}},
        {&jpeg, {}, {"Reverse stretch?"}},
    };
    for (const Case& c : cases) EXPECT_EQ(Walk(*c.info, c.buttons).titles, c.titles);

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
    SetEnv("PELLUCIDA_STATE_DIR", dir.Path().string());
    LoadInfo info{.reader = FileReaderKind::kFits, .grey = true, .askDataGaps = true};
    ImagePtr image = Grey(int64_t{1} << 28, true);
    // Interpolate (the gaps take the median of the rest, alpha stays), non-linear,
    // reversed (linear again, tracking on).
    LoadAnswers answers{.dataGaps = 0, .dataset = 1, .reverse = 0};
    const int64_t opaqueBefore = image->red[5];
    const LoadOutcome outcome = File_ApplyLoadAnswers(image.get(), info, answers);
    EXPECT_TRUE(outcome.linear && outcome.tracking);
    ASSERT_NE(image->alpha, nullptr);
    EXPECT_EQ(image->red[0], image->red[1]);
    EXPECT_LT(image->red[5], opaqueBefore);  // the sRGB curve undone darkens mid-tones
    const std::vector<uint8_t> bytes = ReadFileBytes(dir.Path() / kShellLogFileName);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()),
              "Type of Data: Modified and not linear\nImage size is 4 x 2\n");

    answers.reverse = 1;  // kept stretched: tracking off, samples untouched
    ImagePtr kept = Grey(int64_t{1} << 28, false);
    info.askDataGaps = false;
    const LoadOutcome off = File_ApplyLoadAnswers(kept.get(), info, answers);
    EXPECT_FALSE(off.linear || off.tracking);
    EXPECT_EQ(kept->red[5], (int64_t{1} << 28) + 5);
    UnsetEnv("PELLUCIDA_STATE_DIR");
}
