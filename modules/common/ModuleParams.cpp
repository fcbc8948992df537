// Ranges, value texts and the processing-log block of a module's parameter table.
#include "modules/common/ModuleParams.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace {

constexpr const char* kLogTitlePrefix = "--- ";
constexpr const char* kLogParameterOpen = "Parameter [";
constexpr const char* kLogParameterSetTo = "] set to [";
constexpr const char* kLogParameterClose = "]\n";

}  // namespace

int32_t ModuleParams_Maximum(const ModuleParam& param, int32_t width, int32_t height) {
    switch (param.extent) {
        case ParamExtent::Width:
            return std::max(width - 1, 0);
        case ParamExtent::Height:
            return std::max(height - 1, 0);
        case ParamExtent::Fixed:
            break;
    }
    return param.maximum;
}

int32_t ModuleParams_Default(const ModuleParam& param, int32_t width, int32_t height) {
    if (param.extent != ParamExtent::Fixed && param.defaultValue < 0)
        return ModuleParams_Maximum(param, width, height);
    return param.defaultValue;
}

int32_t ModuleParams_Clamp(const ModuleParam& param, int64_t value, int32_t width, int32_t height) {
    const int64_t hi = ModuleParams_Maximum(param, width, height);
    return static_cast<int32_t>(
        std::clamp<int64_t>(value, param.minimum, std::max<int64_t>(hi, param.minimum)));
}

std::string ModuleParams_ValueText(const ModuleParam& param, int32_t value, int32_t width, int32_t height) {
    if (value == 0 && param.zeroText) return param.zeroText;
    ValueLabelInput input;
    input.position = static_cast<uint32_t>(std::max(value, 0));
    input.maximum = static_cast<uint32_t>(std::max(ModuleParams_Maximum(param, width, height), 0));
    input.extentW = width;
    input.extentH = height;
    if (param.figures) param.figures(input.position, input.figures);
    return ValueLabel_Text(param.label, input);
}

std::string Log_ParameterBlock(const char* title, std::span<const ModuleParam> table, const int32_t* values,
                               int32_t width, int32_t height) {
    std::string text = kLogTitlePrefix;
    text += title ? title : "";
    text += '\n';
    std::vector<size_t> order(table.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return table[a].setterId < table[b].setterId; });
    for (size_t i : order) {
        text += kLogParameterOpen;
        text += table[i].logLabel;
        text += kLogParameterSetTo;
        text += ModuleParams_ValueText(table[i], values[i], width, height);
        text += kLogParameterClose;
    }
    return text;
}
