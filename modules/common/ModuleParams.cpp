// Ranges, value texts and the processing-log block of a module's parameter rows.
#include "modules/common/ModuleParams.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

constexpr const char* kLogTitlePrefix = "--- ";
constexpr const char* kLogParameterOpen = "Parameter [";
constexpr const char* kLogParameterSetTo = "] set to [";
constexpr const char* kLogParameterClose = "]\n";

// Rounding in the formats can land a guess one or two steps off; the exact
// text decides among the neighbours.
constexpr int32_t kParseNeighbourhood = 2;

}  // namespace

int32_t ModuleParams_Maximum(const ModuleParam& row, int32_t width, int32_t height) {
    switch (row.extent) {
        case ParamExtent::Width:
            return std::max(width - 1, 0);
        case ParamExtent::Height:
            return std::max(height - 1, 0);
        case ParamExtent::Fixed:
            break;
    }
    return row.maximum;
}

int32_t ModuleParams_Get(const ModuleParam& row, const void* params) {
    // The accessor only forms the field's address; nothing is written.
    return *row.field(const_cast<void*>(params));
}

void ModuleParams_Set(const ModuleParam& row, void* params, int32_t value) {
    *row.field(params) = value;
}

int32_t ModuleParams_Position(const ModuleParam& row, const void* params, int32_t width, int32_t height) {
    const int32_t value = ModuleParams_Get(row, params);
    const int32_t hi = std::max(ModuleParams_Maximum(row, width, height), row.minimum);
    if (row.extent != ParamExtent::Fixed && value == kParamLast) return hi;
    return std::clamp(value, row.minimum, hi);
}

bool ModuleParams_Accepts(const ModuleParam& row, int64_t value) {
    if (row.extent != ParamExtent::Fixed) return value >= 0 && value <= INT32_MAX;
    return value >= row.minimum && value <= row.maximum;
}

std::string ModuleParams_ValueText(const ModuleParam& row, int32_t position, int32_t width, int32_t height) {
    if (position == 0 && row.zeroText) return row.zeroText;
    ValueLabelInput input;
    input.position = static_cast<uint32_t>(std::max(position, 0));
    input.maximum = static_cast<uint32_t>(std::max(ModuleParams_Maximum(row, width, height), 0));
    input.extentW = width;
    input.extentH = height;
    if (row.figures) row.figures(input.position, input.figures);
    return ValueLabel_Text(row.label, input);
}

bool ModuleParams_ParseValueText(const ModuleParam& row, std::string_view text, int32_t width, int32_t height,
                                 int32_t* position) {
    const int32_t lo = row.minimum, hi = std::max(ModuleParams_Maximum(row, width, height), lo);
    if (row.zeroText && text == row.zeroText && lo <= 0 && hi >= 0) {
        *position = 0;
        return true;
    }
    const auto matches = [&](int64_t v) {
        return v >= lo && v <= hi && ModuleParams_ValueText(row, int32_t(v), width, height) == text;
    };
    int64_t guess = 0;
    if (ValueLabel_Guess(row.label, text, uint32_t(hi), width, height, &guess)) {
        for (int64_t d = 0; d <= kParseNeighbourhood; ++d) {
            if (matches(guess - d)) return *position = int32_t(guess - d), true;
            if (matches(guess + d)) return *position = int32_t(guess + d), true;
        }
    }
    // Members whose text does not lead back to the position (computed figures)
    // are searched; their ranges are small.
    for (int64_t v = lo; v <= hi; ++v)
        if (matches(v)) return *position = int32_t(v), true;
    return false;
}

std::string Log_ParameterBlock(const char* title, std::span<const ModuleParam> rows, const void* params,
                               int32_t width, int32_t height) {
    std::string text = kLogTitlePrefix;
    text += title ? title : "";
    text += '\n';
    std::vector<size_t> order(rows.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return rows[a].setterId < rows[b].setterId; });
    for (size_t i : order) {
        text += kLogParameterOpen;
        text += rows[i].caption;
        text += kLogParameterSetTo;
        text += ModuleParams_ValueText(rows[i], ModuleParams_Position(rows[i], params, width, height), width,
                                       height);
        text += kLogParameterClose;
    }
    return text;
}
