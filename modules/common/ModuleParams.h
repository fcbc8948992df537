// A module's parameters as data: one row per level setter with its command
// line name, identifier, range, default, log label and value-label member.
// The one table drives clamping, option parsing and the "Parameter [" block
// of the processing log, so the log reads the same whether a step was kept in
// the desktop program or run in a batch.
#pragma once

#include "modules/common/ValueLabel_Format.h"

#include <cstdint>
#include <span>
#include <string>

// Four ASCII characters, the first most significant ("LvS1").
constexpr uint32_t ModuleParams_Id(const char (&text)[5]) {
    return (uint32_t(uint8_t(text[0])) << 24) | (uint32_t(uint8_t(text[1])) << 16) |
           (uint32_t(uint8_t(text[2])) << 8) | uint32_t(uint8_t(text[3]));
}

// Ranges that follow the image: 0..width - 1 or 0..height - 1.
enum class ParamExtent : uint8_t { Fixed, Width, Height };

struct ModuleParam {
    const char* name;   // key on the command line ("blur")
    uint32_t setterId;  // level setter identifier ("LvS1")
    int32_t minimum;
    int32_t maximum;  // for Width/Height extents: ignored, the image gives it
    ParamExtent extent;
    int32_t defaultValue;  // for Width/Height extents: 0 or -1 (the last column or row)
    const char* logLabel;  // caption of the setter in the form
    ValueLabelKind label;
    const char* zeroText;  // text shown at position 0 instead of the member's, or null
    void (*figures)(uint32_t position, double figures[3]);  // for computed members, or null
};

int32_t ModuleParams_Maximum(const ModuleParam& param, int32_t width, int32_t height);
int32_t ModuleParams_Default(const ModuleParam& param, int32_t width, int32_t height);
// The setter's range clamps a value.
int32_t ModuleParams_Clamp(const ModuleParam& param, int64_t value, int32_t width, int32_t height);
std::string ModuleParams_ValueText(const ModuleParam& param, int32_t value, int32_t width, int32_t height);

// "--- " title, then one "Parameter [label] set to [value]" line per setter in
// identifier order; values[i] belongs to table[i].
std::string Log_ParameterBlock(const char* title, std::span<const ModuleParam> table, const int32_t* values,
                               int32_t width, int32_t height);
