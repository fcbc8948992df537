// A module's parameters as data: one row per level setter, naming the field of
// the module's parameter struct it sets, its command-line key, range, log
// caption and value-label member. Defaults live once, in the struct's member
// initialisers. The rows drive clamping, option parsing, the help text, the
// "Parameter [" block of the processing log and reading that block back, so a
// step reads the same whether it was kept in the window or run in a batch.
#pragma once

#include "modules/common/ValueLabel_Format.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// Four ASCII characters, the first most significant ("LvS1").
constexpr uint32_t ModuleParams_Id(const char (&text)[5]) {
    return (uint32_t(uint8_t(text[0])) << 24) | (uint32_t(uint8_t(text[1])) << 16) |
           (uint32_t(uint8_t(text[2])) << 8) | uint32_t(uint8_t(text[3]));
}

// Ranges that follow the image: 0..width - 1 or 0..height - 1.
enum class ParamExtent : uint8_t { Fixed, Width, Height };

// A row's field in its module's parameter struct (Param_Field<&Struct::member>).
using ParamFieldFn = int32_t* (*)(void* params);

template <class T>
struct ParamMemberOf;
template <class C>
struct ParamMemberOf<int32_t C::*> {
    using Class = C;
};
template <auto Member>
int32_t* Param_Field(void* params) {
    using Class = typename ParamMemberOf<decltype(Member)>::Class;
    return &(static_cast<Class*>(params)->*Member);
}

// A field of Width/Height extent holding this stands for the last column or
// row, whatever the image's size.
inline constexpr int32_t kParamLast = -1;

struct ModuleParam {
    const char* key;    // command-line key ("blur")
    const char* group;  // key that sets this row with its neighbours as A:B:C:D ("roi"), or null
    uint32_t setterId;  // level setter identifier ("LvS1")
    ParamFieldFn field;
    int32_t minimum;
    int32_t maximum;  // for Width/Height extents: ignored, the image gives it
    ParamExtent extent;
    const char* caption;  // the setter's caption in the form, and in the log
    ValueLabelKind label;
    const char* zeroText;                                   // text shown at position 0 instead, or null
    void (*figures)(uint32_t position, double figures[3]);  // for computed members, or null
};

// A button that moves one setter to a fixed position ("Bt71" sets LvS1 to 7071).
struct ParamPreset {
    uint32_t buttonId;
    uint32_t setterId;
    int32_t position;
};

int32_t ModuleParams_Maximum(const ModuleParam& row, int32_t width, int32_t height);
int32_t ModuleParams_Get(const ModuleParam& row, const void* params);
void ModuleParams_Set(const ModuleParam& row, void* params, int32_t value);
// The field as a setter position for an image of this size: kParamLast resolved
// and the setter's range applied.
int32_t ModuleParams_Position(const ModuleParam& row, const void* params, int32_t width, int32_t height);
// True when a value may be given on the command line, before the image's size
// is known: within the fixed range, or not negative for image extents.
bool ModuleParams_Accepts(const ModuleParam& row, int64_t value);

std::string ModuleParams_ValueText(const ModuleParam& row, int32_t position, int32_t width, int32_t height);
// Reads a value text the row wrote back into its position (replaying a
// processing log); false when no position of the row's range gives that text.
bool ModuleParams_ParseValueText(const ModuleParam& row, std::string_view text, int32_t width, int32_t height,
                                 int32_t* position);

// "--- " title, then one "Parameter [caption] set to [value]" line per setter
// in identifier order, for the positions the struct holds.
std::string Log_ParameterBlock(const char* title, std::span<const ModuleParam> rows, const void* params,
                               int32_t width, int32_t height);
