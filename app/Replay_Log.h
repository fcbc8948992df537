// Reading a processing log back as the steps it records, so that another
// image can be given the same treatment without the window: the dataset
// answer and each kept step's parameter block after the last load. Pure: text
// in, steps out; pellucida-cli's `replay` runs them through the pipeline.
#pragma once

#include "formats/File_Load.h"
#include "modules/Pipeline.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A value whose position depends on the image's size at its step (a RoI or
// crop corner): it is read when that size is known.
struct ReplayExtentValue {
    const ModuleParam* row = nullptr;
    std::string text;
    int line = 0;
};

struct ReplayStep {
    int line = 0;       // its "--- " title line, counted from 1
    PipelineStep step;  // the fixed-range values read, the others at their defaults
    std::vector<ReplayExtentValue> extentValues;
};

struct ReplayLog {
    int loadLine = 0;  // the last "File loaded [" line
    std::optional<DatasetAnswer> dataset;
    int32_t width = 0, height = 0;  // "Image size is %d x %d"
    int sizeLine = 0;
    std::vector<ReplayStep> steps;
};

// Reads the part of the log after its last "File loaded [" line. False with
// "line N: reason" in `error` on any line it cannot read.
bool Replay_ReadLog(std::string_view text, ReplayLog* log, std::string* error);

// The step with its size-dependent values read for an image of this size.
// False with "line N: reason" when a text is one no position gives.
bool Replay_ResolveStep(const ReplayStep& step, int32_t width, int32_t height, PipelineStep* out,
                        std::string* error);
