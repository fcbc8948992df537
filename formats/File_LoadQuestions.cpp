#include "formats/File_LoadQuestions.h"

#include "host/Shell_Log.h"
#include "image/Image.h"
#include "image/Image_Fill.h"
#include "image/Image_Srgb.h"

namespace {

constexpr const char* kDataGapsText =
    "This image contains transparent pixels (alpha not set). Unless the missing data is interpolated with "
    "neutral place holder data (which may later be removed again), some features in Pellucida may produce "
    "anomalous results. Would you like to interpolate the missing data, or use the values of the the "
    "transparent pixels as-is?";
constexpr const char* kDatasetGreyText =
    "Have the pixels in this dataset been non-linearly stretched\n\nChoose LINEAR if the pixels in the "
    "dataset have not been stretched.\n\nChoose NON-LINEAR SRGB SOURCE if the dataset is from a JPEG or MPEG "
    "source (such as a digital camera or webcam); Pellucida can attempt to reverse this stretch.";
constexpr const char* kDatasetColourText =
    "Have the pixels in this dataset been non-linearly stretched or color balanced?\n\nChoose LINEAR if the "
    "pixels in the dataset have not been stretched and the colour has been balanced, or came from a camera "
    "without a Bayer matrix.\n\nChoose LINEAR, FROM OSC/DSLR AND NOT WHITE BALANCED if the pixels have not "
    "been stretched and come from a one-shot-colour camera or DSLR whose Bayer matrix was not white "
    "balanced.\n\nChoose NON-LINEAR SRGB SOURCE if the dataset is from a JPEG or MPEG source (such as a "
    "digital camera or webcam); Pellucida can attempt to reverse this stretch.";
constexpr const char* kReverseStretchText =
    "This image may have been stretched. If the data came directly from a JPEG or MPEG source (such as a "
    "digital camera or webcam) or is a stack of multiple frames from such a source, then Pellucida can "
    "attempt to reverse this stretch. This may make it possible to avail of some of the benefits of "
    "Pellucida' tracking mode, although your mileage may vary.";
constexpr const char* kReverseSrgbText =
    "You have indicated that this dataset was stretched. If the dataset is from a JPEG or MPEG source (such "
    "as a digital camera or webcam), then Pellucida can attempt to reverse this stretch. This makes it "
    "possible to use signal evolution Tracking.";

constexpr const char* kButtonInterpolate = "Interpolate";
constexpr const char* kButtonUseTransparent = "Use transparent values";
constexpr const char* kButtonOk = "OK";
constexpr const char* kButtonLinear = "Linear";
constexpr const char* kButtonLinearOsc = "Linear, from OSC/DSLR with Bayer matrix and not white balanced";
constexpr const char* kButtonNonLinear = "Non-linear sRGB source";

constexpr int kInterpolate = 0;
constexpr int kAttemptReverse = 0;

bool NonLinearAnswer(const LoadInfo& info, int button) {
    return button >= 0 && File_DatasetAnswerOf(button, info.grey) == DatasetAnswer::kNonLinearSrgb;
}

}  // namespace

bool File_NextLoadQuestion(const LoadInfo& info, const LoadAnswers& answers, LoadQuestion* q) {
    if (info.askDataGaps && answers.dataGaps < 0) {
        *q = {LoadQuestionId::kDataGaps,
              kDataGapsTitle,
              kDataGapsText,
              {kButtonInterpolate, kButtonUseTransparent}};
        return true;
    }
    if (info.artefacts && answers.artefacts < 0) {
        *q = {LoadQuestionId::kArtefacts, kArtefactsTitle, kArtefactsText, {kButtonOk}};
        return true;
    }
    if (info.reader == FileReaderKind::kJpeg) {
        if (answers.reverse >= 0) return false;
        *q = {LoadQuestionId::kReverseStretch,
              kReverseStretchTitle,
              kReverseStretchText,
              {"Attempt to reverse stretch, activate tracking", "Don't activate tracking"}};
        return true;
    }
    if (answers.dataset < 0) {
        if (info.grey)
            *q = {
                LoadQuestionId::kDataset, kDatasetTitle, kDatasetGreyText, {kButtonLinear, kButtonNonLinear}};
        else
            *q = {LoadQuestionId::kDataset,
                  kDatasetTitle,
                  kDatasetColourText,
                  {kButtonLinear, kButtonLinearOsc, kButtonNonLinear}};
        return true;
    }
    if (NonLinearAnswer(info, answers.dataset) && answers.reverse < 0) {
        *q = {LoadQuestionId::kReverseSrgb,
              kReverseSrgbTitle,
              kReverseSrgbText,
              {"Attempt to reverse stretch, activate Tracking", "Don't activate Tracking"}};
        return true;
    }
    return false;
}

void File_AnswerLoadQuestion(LoadAnswers* answers, LoadQuestionId id, int button) {
    switch (id) {
        case LoadQuestionId::kDataGaps:
            answers->dataGaps = button;
            break;
        case LoadQuestionId::kArtefacts:
            answers->artefacts = button;
            break;
        case LoadQuestionId::kDataset:
            answers->dataset = button;
            break;
        case LoadQuestionId::kReverseStretch:
        case LoadQuestionId::kReverseSrgb:
            answers->reverse = button;
            break;
    }
}

int File_DatasetButton(DatasetAnswer answer, bool grey) {
    switch (answer) {
        case DatasetAnswer::kLinear:
            return 0;
        case DatasetAnswer::kLinearOsc:
            return grey ? 0 : 1;
        case DatasetAnswer::kNonLinearSrgb:
            return grey ? 1 : 2;
    }
    return 0;
}

DatasetAnswer File_DatasetAnswerOf(int button, bool grey) {
    if (button == (grey ? 1 : 2)) return DatasetAnswer::kNonLinearSrgb;
    if (!grey && button == 1) return DatasetAnswer::kLinearOsc;
    return DatasetAnswer::kLinear;
}

LoadOutcome File_ApplyLoadAnswers(ImageBuffer* image, const LoadInfo& info, const LoadAnswers& answers) {
    LoadOutcome outcome;
    if (info.askDataGaps && answers.dataGaps == kInterpolate) Image_FillTransparent(image);
    bool stretched = false;
    if (info.reader == FileReaderKind::kJpeg) {
        stretched = true;
    } else if (answers.dataset >= 0) {
        const DatasetAnswer dataset = File_DatasetAnswerOf(answers.dataset, info.grey);
        File_ApplyDatasetAnswer(image, dataset, info.grey);
        stretched = dataset == DatasetAnswer::kNonLinearSrgb;
    }
    if (stretched) {
        const bool reverse = answers.reverse == kAttemptReverse;
        if (reverse) Image_DecodeSrgb(image);
        outcome.linear = reverse;
        outcome.tracking = reverse;
    }
    File_LogImageSize(image);
    return outcome;
}
