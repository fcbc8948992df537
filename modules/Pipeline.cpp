// Parsing, running and describing the batch processing steps.
#include "modules/Pipeline.h"

#include "image/Image.h"
#include "modules/Module_List.h"

#include <cctype>
#include <charconv>
#include <string_view>
#include <vector>

namespace {

constexpr const char* kErrorUnknownStep = "unknown processing step: ";
constexpr const char* kErrorValue = "invalid value in ";
constexpr const char* kErrorRange = "value out of range in ";
constexpr const char* kErrorKey = "unknown setting: ";

bool Fail(std::string* error, const char* reason, std::string_view what) {
    if (error) {
        *error = reason;
        error->append(what);
    }
    return false;
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    size_t start = 0;
    for (;;) {
        const size_t at = text.find(separator, start);
        parts.push_back(
            text.substr(start, at == std::string_view::npos ? std::string_view::npos : at - start));
        if (at == std::string_view::npos) return parts;
        start = at + 1;
    }
}

std::string Option(const ModuleDef& module) {
    return std::string("--") + module.option;
}

// The module whose option `option` is, with its value part (empty for none).
const ModuleDef* Match(std::string_view option, std::string_view* values, bool* hasValues) {
    for (const ModuleDef* module : Module_List()) {
        const std::string name = Option(*module);
        if (option == name) {
            *hasValues = false;
            return module;
        }
        if (!module->params.empty() && option.starts_with(name) && option.size() > name.size() &&
            option[name.size()] == '=') {
            *values = option.substr(name.size() + 1);
            *hasValues = true;
            return module;
        }
    }
    return nullptr;
}

bool SetRow(const ModuleParam& row, std::string_view text, void* params, std::string_view option,
            std::string* error) {
    int64_t value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || ec != std::errc() || end != text.data() + text.size())
        return Fail(error, kErrorValue, option);
    if (!ModuleParams_Accepts(row, value)) return Fail(error, kErrorRange, option);
    ModuleParams_Set(row, params, int32_t(value));
    return true;
}

// Colon-separated values for the rows in order.
bool SetRows(const std::vector<const ModuleParam*>& rows, std::string_view text, void* params,
             std::string_view option, std::string* error) {
    const std::vector<std::string_view> parts = Split(text, ':');
    if (parts.size() != rows.size()) return Fail(error, kErrorValue, option);
    for (size_t i = 0; i < rows.size(); ++i)
        if (!SetRow(*rows[i], parts[i], params, option, error)) return false;
    return true;
}

std::vector<const ModuleParam*> Group(const ModuleDef& module, std::string_view group) {
    std::vector<const ModuleParam*> rows;
    for (const ModuleParam& row : module.params)
        if (row.group && group == row.group) rows.push_back(&row);
    return rows;
}

std::vector<const ModuleParam*> AllRows(const ModuleDef& module) {
    std::vector<const ModuleParam*> rows;
    for (const ModuleParam& row : module.params) rows.push_back(&row);
    return rows;
}

bool ParseValues(const ModuleDef& module, std::string_view values, void* params, std::string_view option,
                 std::string* error) {
    if (values.find('=') == std::string_view::npos)
        return SetRows(AllRows(module), values, params, option, error);
    for (std::string_view item : Split(values, ',')) {
        const size_t eq = item.find('=');
        if (eq == std::string_view::npos) return Fail(error, kErrorKey, item);
        const std::string_view key = item.substr(0, eq), value = item.substr(eq + 1);
        const ModuleParam* row = nullptr;
        for (const ModuleParam& r : module.params)
            if (key == r.key) row = &r;
        if (row) {
            if (!SetRow(*row, value, params, option, error)) return false;
            continue;
        }
        const std::vector<const ModuleParam*> group = Group(module, key);
        if (group.empty()) return Fail(error, kErrorKey, key);
        if (!SetRows(group, value, params, option, error)) return false;
    }
    return true;
}

std::string Upper(std::string_view text) {
    std::string out(text);
    for (char& c : out) c = char(std::toupper(static_cast<unsigned char>(c)));
    return out;
}

std::string Range(const ModuleParam& row, const ModuleDef& module) {
    if (row.extent != ParamExtent::Fixed) return row.extent == ParamExtent::Width ? "a column" : "a row";
    const ModuleParamsBuffer defaults = Module_DefaultParams(module);
    return std::to_string(row.minimum) + ".." + std::to_string(row.maximum) + ", default " +
           std::to_string(ModuleParams_Get(row, defaults.bytes));
}

// "X0:Y0:X1:Y1" for the rows of a group.
std::string Placeholders(const std::vector<const ModuleParam*>& rows) {
    std::string text;
    for (const ModuleParam* row : rows) text += (text.empty() ? "" : ":") + Upper(row->key);
    return text;
}

// "  HEAD   text", the text wrapped to the help's width in the second column.
void AppendEntry(std::string* help, const std::string& head, const std::string& text) {
    constexpr size_t kColumn = 21, kWidth = 100;
    std::string line = "  " + head;
    if (line.size() + 1 > kColumn) {
        *help += line + "\n";
        line.clear();
    }
    line.resize(kColumn, ' ');
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.size();
        if (kColumn + (end - start) > kWidth) {
            end = text.rfind(' ', start + (kWidth - kColumn));
            if (end == std::string::npos || end <= start) end = text.find(' ', start + 1);
            if (end == std::string::npos) end = text.size();
        }
        line += text.substr(start, end - start);
        *help += line + "\n";
        line.assign(kColumn, ' ');
        start = end < text.size() ? end + 1 : end;
    }
}

}  // namespace

bool Pipeline_IsStepOption(const std::string& option) {
    std::string_view values;
    bool hasValues = false;
    return Match(option, &values, &hasValues) != nullptr;
}

bool Pipeline_ParseStep(const std::string& option, PipelineStep* step, std::string* error) {
    std::string_view values;
    bool hasValues = false;
    const ModuleDef* module = Match(option, &values, &hasValues);
    if (!module) return Fail(error, kErrorUnknownStep, option);
    PipelineStep s;
    s.module = module;
    s.params = Module_DefaultParams(*module);
    if (hasValues && !ParseValues(*module, values, s.params.bytes, option, error)) return false;
    *step = s;
    return true;
}

bool Pipeline_RunStep(const PipelineStep& step, ImageBuffer** image, ImageBuffer** mask,
                      const KernelControl* control, std::string* logBlock) {
    if (logBlock) logBlock->clear();
    if (!step.module || !image || !*image) return false;
    const int32_t width = (*image)->width, height = (*image)->height;
    switch (Module_Run(*step.module, step.params.bytes, image, mask, control)) {
        case ModuleRunStatus::kCancelled:
            return false;
        case ModuleRunStatus::kNoResult:
            return true;
        case ModuleRunStatus::kDone:
            break;
    }
    if (logBlock) *logBlock = Module_LogBlock(*step.module, step.params.bytes, width, height);
    return true;
}

std::string Pipeline_Help() {
    std::string help;
    for (const ModuleDef* module : Module_List()) {
        const ModuleDef& m = *module;
        const std::vector<const ModuleParam*> rows = AllRows(m);
        const bool oneGroup =
            !rows.empty() && rows.front()->group && Group(m, rows.front()->group).size() == rows.size();
        if (rows.empty()) {
            AppendEntry(&help, Option(m), m.summary);
        } else if (rows.size() == 1) {
            AppendEntry(&help, Option(m) + "=V",
                        std::string(m.summary) + " (" + rows[0]->caption + ", " + Range(*rows[0], m) + ")");
        } else if (oneGroup) {
            AppendEntry(&help, Option(m) + "=" + Placeholders(rows), m.summary);
        } else {
            AppendEntry(&help, Option(m) + "[=LIST]", std::string(m.summary) + "; LIST is KEY=V,...:");
            std::vector<std::string> groupsDone;
            for (const ModuleParam* row : rows) {
                if (!row->group) {
                    AppendEntry(&help, "  " + std::string(row->key) + "=V",
                                std::string(row->caption) + ", " + Range(*row, m));
                    continue;
                }
                bool done = false;
                for (const std::string& g : groupsDone) done |= g == row->group;
                if (done) continue;
                groupsDone.push_back(row->group);
                const std::vector<const ModuleParam*> group = Group(m, row->group);
                std::string captions;
                for (const ModuleParam* r : group)
                    captions += (captions.empty() ? "" : ", ") + std::string(r->caption);
                AppendEntry(&help, "  " + std::string(row->group) + "=" + Placeholders(group),
                            captions + " (whole image)");
            }
        }
    }
    return help;
}
