// The family of value-label formatters: each turns a level setter's position
// into the short text shown beside the slider, in the module's own terms. Pure
// text, so that the module forms, the processing log and the command line all
// print a parameter the same way; the toolkit only displays what it is given.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// One entry per member; the comment gives its format and what it prints.
enum class ValueLabelKind : uint8_t {
    Plain,               // "%d"                 v
    PlainPlusOne,        // "%d"                 v + 1
    Pixels,              // "%d pixels"          v
    PixelsPlusOne,       // "%d pixels"          v + 1
    PixelsFromCentreX,   // "%d pixels"          v - W / 2
    PixelsFromCentreY,   // "%d pixels"          v - H / 2
    PixelsAndRestX,      // "%d pixels (-%d)"    v + 1, W - 1 - v
    PixelsAndRestY,      // "%d pixels (-%d)"    v + 1, H - 1 - v
    TenthPixelsFromOne,  // "%2.1f pixels"       (v + 10) * 0.1
    SignedPixels,        // "%2.1f pixels"       (2v - max) * 0.05
    TenthsFromOne,       // "%2.1f"              (v + 10) * 0.1
    TenthsFromOneFine,   // "%2.2f"              (v + 10) * 0.1
    Tenths,              // "%2.2f"              v * 0.1
    Hundredths,          // "%2.2f"              v * 0.01
    HundredthsFromOne,   // "%2.2f"              (v + 100) * 0.01
    Percent,             // "%d %%"              v
    SignedPercent,       // "%.2f %%"            (v - 10000) * 0.01
    ComputedPercent,     // "%.2f %%"            figures[0] * 0.01
    PercentSplit,        // "%d%% / %d%%"        max - v, v
    SquareSize,          // "%d x %d pixels"     2^(v + 7) twice
    Millimetres,         // "%.0fmm / %.2f\""    figures[0] mm, in inches
    MillimetresFine,     // "%.1fmm / %.2f\""    figures[0] mm, in inches
    Minutes,             // "%dh%02dm (%dm) (%ds)"  v / 60, v mod 60, v, v * 60
    FieldOfView,         // "%d Arc Minutes (%d' x %d')"  v + 1, figures[0], figures[1]
    DenoiseScale,        // "(scale/noise reduction ...)"  figures[0..2]
    NoiseDetail,         // "noisier" / "optimal" / "smoother" around v = 100
    ShadowHighlight,     // "shadow dominant" / "balanced" / "highlight dominant" around max / 2
};

// What a formatter needs besides the kind. The extents are the image size that
// the module sets for the offset members; figures are values the caller derives
// from the position for the members whose mapping belongs to a module
// (millimetres, field of view, denoise figures, computed percent).
struct ValueLabelInput {
    uint32_t position = 0;
    uint32_t maximum = 0;
    int32_t extentW = 0;
    int32_t extentH = 0;
    double figures[3] = {0.0, 0.0, 0.0};
};

// Longest text any member can produce, with its NUL.
inline constexpr size_t kValueLabelCapacity = 128;

// Writes the member's text into `out` (always NUL-terminated when size > 0).
// Returns the length of the text.
size_t ValueLabel_Format(ValueLabelKind kind, const ValueLabelInput& input, char* out, size_t size);
std::string ValueLabel_Text(ValueLabelKind kind, const ValueLabelInput& input);

// The position a member's text most likely came from, worked back from the
// numbers it prints; false for members whose numbers a module computes. The
// guess can be a step or two off where a format rounds: callers confirm it by
// formatting again.
bool ValueLabel_Guess(ValueLabelKind kind, std::string_view text, uint32_t maximum, int32_t extentW,
                      int32_t extentH, int64_t* position);
