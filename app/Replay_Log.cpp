// The processing log read back: which lines carry a step, which only report
// (saves, the OSC balance), and which make the log unreadable.
#include "app/Replay_Log.h"

#include "formats/Format_Limits.h"
#include "modules/Module_List.h"

#include <charconv>

namespace {

constexpr std::string_view kLoaded = "File loaded [";
constexpr std::string_view kDataType = "Type of Data: ";
constexpr std::string_view kImageSize = "Image size is ";
constexpr std::string_view kBlockTitle = "--- ";
constexpr std::string_view kParameter = "Parameter [";
constexpr std::string_view kSetTo = "] set to [";
// Lines that report and change nothing a replay must repeat: the balance is
// measured again on the new image, and saves and exports are the replay's own.
constexpr std::string_view kReportOnly[] = {
    "Colour balanced for OSC data: ", "File saved [",        "Could not save file [",
    "Stereo image exported [",        "VR image exported [", "Facebook 3D image set exported ["};

bool Fail(std::string* error, int line, const std::string& reason) {
    if (error) *error = "line " + std::to_string(line) + ": " + reason;
    return false;
}

std::string Quoted(std::string_view text) {
    std::string quoted(1, '"');
    quoted.append(text);
    quoted += '"';
    return quoted;
}

std::vector<std::string_view> Lines(std::string_view text) {
    std::vector<std::string_view> lines;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = text.substr(start, end - start);
        if (line.ends_with('\r')) line.remove_suffix(1);  // a log copied through Windows
        lines.push_back(line);
        start = end + 1;
    }
    return lines;
}

std::optional<DatasetAnswer> DatasetOf(std::string_view line) {
    for (DatasetAnswer answer :
         {DatasetAnswer::kLinear, DatasetAnswer::kLinearOsc, DatasetAnswer::kNonLinearSrgb})
        for (bool grey : {false, true}) {
            std::string_view logged = File_DatasetLogLine(answer, grey);
            if (logged.ends_with('\n')) logged.remove_suffix(1);
            if (line == logged) return answer;
        }
    return std::nullopt;
}

bool ReadInt(std::string_view text, int32_t* value) {
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), *value);
    return !text.empty() && ec == std::errc() && end == text.data() + text.size();
}

// "W x H" within the sizes any reader accepts.
bool ReadSize(std::string_view text, int32_t* width, int32_t* height) {
    const size_t x = text.find(" x ");
    return x != std::string_view::npos && ReadInt(text.substr(0, x), width) &&
           ReadInt(text.substr(x + 3), height) && *width > 0 && *height > 0 &&
           Format_SizeFits(*width, *height);
}

bool ReadParameter(std::string_view line, int number, ReplayStep* step, std::vector<const ModuleParam*>* seen,
                   std::string* error) {
    const size_t setTo = line.find(kSetTo);
    if (setTo == std::string_view::npos || !line.ends_with(']'))
        return Fail(error, number, "unreadable parameter line");
    const std::string_view caption = line.substr(kParameter.size(), setTo - kParameter.size());
    const size_t valueAt = setTo + kSetTo.size();
    const std::string_view value = line.substr(valueAt, line.size() - 1 - valueAt);
    const ModuleDef& module = *step->step.module;
    const ModuleParam* row = nullptr;
    for (const ModuleParam& r : module.params)
        if (caption == r.caption) row = &r;
    if (!row) return Fail(error, number, module.name + std::string(" has no parameter ") + Quoted(caption));
    for (const ModuleParam* r : *seen)
        if (r == row) return Fail(error, number, "parameter " + Quoted(caption) + " given twice");
    seen->push_back(row);
    if (row->extent != ParamExtent::Fixed) {
        step->extentValues.push_back({row, std::string(value), number});
        return true;
    }
    int32_t position = 0;
    if (!ModuleParams_ParseValueText(*row, value, 0, 0, &position))
        return Fail(error, number, "no position of " + Quoted(caption) + " gives " + Quoted(value));
    ModuleParams_Set(*row, step->step.params.bytes, position);
    return true;
}

}  // namespace

bool Replay_ReadLog(std::string_view text, ReplayLog* log, std::string* error) {
    *log = ReplayLog{};
    const std::vector<std::string_view> lines = Lines(text);
    size_t first = lines.size();
    for (size_t i = lines.size(); i-- > 0;)
        if (lines[i].starts_with(kLoaded)) {
            first = i;
            break;
        }
    if (first == lines.size()) return Fail(error, int(lines.size()), "no \"File loaded [\" line");
    log->loadLine = int(first) + 1;

    ReplayStep* block = nullptr;  // the step whose parameter lines follow
    bool reportBlock = false;     // the parameters of a module that kept nothing (an export's)
    std::vector<const ModuleParam*> seen;
    for (size_t i = first + 1; i < lines.size(); ++i) {
        const std::string_view line = lines[i];
        const int number = int(i) + 1;
        if (line.starts_with(kParameter)) {
            if (reportBlock) continue;
            if (!block) return Fail(error, number, "a parameter outside a step's block");
            if (!ReadParameter(line, number, block, &seen, error)) return false;
            continue;
        }
        block = nullptr;
        reportBlock = false;
        if (line.starts_with(kBlockTitle)) {
            const std::string_view title = line.substr(kBlockTitle.size());
            const ModuleDef* module = Module_FindByName(title);
            if (module && !module->logged) {
                reportBlock = true;
                continue;
            }
            if (!module) return Fail(error, number, "unknown step " + Quoted(title));
            log->steps.push_back({number, {module, Module_DefaultParams(*module)}, {}});
            block = &log->steps.back();
            seen.clear();
        } else if (line.starts_with(kDataType)) {
            if (log->dataset || !log->steps.empty()) return Fail(error, number, "a second dataset answer");
            log->dataset = DatasetOf(line);
            if (!log->dataset) return Fail(error, number, "unknown dataset answer");
        } else if (line.starts_with(kImageSize)) {
            if (log->sizeLine) return Fail(error, number, "a second image size");
            if (!ReadSize(line.substr(kImageSize.size()), &log->width, &log->height))
                return Fail(error, number, "unreadable image size");
            log->sizeLine = number;
        } else {
            bool reportOnly = false;
            for (std::string_view prefix : kReportOnly) reportOnly |= line.starts_with(prefix);
            if (!reportOnly) return Fail(error, number, "unreadable line " + Quoted(line));
        }
    }
    if (!log->sizeLine) return Fail(error, log->loadLine, "the load has no \"Image size is\" line");
    return true;
}

bool Replay_ResolveStep(const ReplayStep& step, int32_t width, int32_t height, PipelineStep* out,
                        std::string* error) {
    *out = step.step;
    for (const ReplayExtentValue& value : step.extentValues) {
        int32_t position = 0;
        if (!ModuleParams_ParseValueText(*value.row, value.text, width, height, &position))
            return Fail(error, value.line,
                        "no position of " + Quoted(value.row->caption) + " gives " + Quoted(value.text) +
                            " on an image of " + std::to_string(width) + " x " + std::to_string(height));
        ModuleParams_Set(*value.row, out->params.bytes, position);
    }
    return true;
}
