// The questions a freshly loaded image raises, as data, and the one place
// their answers take effect. The desktop program asks them in message boxes
// and the command line answers them from its options; both walk the same
// sequence: data gaps, stacking artefacts, then the type of dataset (or, for
// a JPEG, whether to reverse its stretch), with the follow-up about reversing
// an sRGB stretch when the data was declared non-linear.
#pragma once

#include "formats/File_Load.h"

#include <cstdint>
#include <vector>

enum class LoadQuestionId : uint8_t { kDataGaps, kArtefacts, kDataset, kReverseStretch, kReverseSrgb };

struct LoadQuestion {
    LoadQuestionId id = LoadQuestionId::kDataGaps;
    const char* title = "";
    const char* text = "";
    std::vector<const char*> buttons;  // left to right
};

// Each answer is the index of the button chosen; -1 while not asked.
struct LoadAnswers {
    int dataGaps = -1;   // "Interpolate", "Use transparent values"
    int artefacts = -1;  // "OK"
    int dataset = -1;    // grey: Linear, Non-linear; colour: Linear, Linear OSC, Non-linear
    int reverse = -1;    // "Attempt to reverse stretch, ...", "Don't activate ..."
};

// The next question to ask, given the answers so far; false when none is left.
bool File_NextLoadQuestion(const LoadInfo& info, const LoadAnswers& answers, LoadQuestion* question);
void File_AnswerLoadQuestion(LoadAnswers* answers, LoadQuestionId id, int button);

// The dataset question's button for an answer, and back, for grey or colour
// data (grey data has no OSC answer: it is linear).
int File_DatasetButton(DatasetAnswer answer, bool grey);
DatasetAnswer File_DatasetAnswerOf(int button, bool grey);

// What the answers decided about the data.
struct LoadOutcome {
    bool linear = true;    // the samples are (now) linear
    bool tracking = true;  // signal tracking is on
};

// Acts on the answers in the order they were asked and writes their log lines,
// then "Image size is %d x %d\n": transparent pixels filled with neutral values
// (their alpha kept) for "Interpolate", the dataset line and an OSC colour
// balance, and the sRGB stretch reversed when that was chosen.
LoadOutcome File_ApplyLoadAnswers(ImageBuffer* image, const LoadInfo& info, const LoadAnswers& answers);

inline constexpr const char* kDataGapsTitle = "Data gaps detected";
inline constexpr const char* kDatasetTitle = "Type of dataset?";
inline constexpr const char* kReverseStretchTitle = "Reverse stretch?";
inline constexpr const char* kReverseSrgbTitle = "Reverse sRGB stretch?";
