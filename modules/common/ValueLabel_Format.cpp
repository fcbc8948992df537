// The value-label formatters of the level setter. Every member formats the
// position with its own wording; fractions are computed in double precision,
// integer divisions stay integer.
#include "modules/common/ValueLabel_Format.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr const char* kFormatInt = "%d";
constexpr const char* kFormatPixels = "%d pixels";
constexpr const char* kFormatPixelsAndRest = "%d pixels (-%d)";
constexpr const char* kFormatTenthPixels = "%2.1f pixels";
constexpr const char* kFormatOneDecimal = "%2.1f";
constexpr const char* kFormatTwoDecimals = "%2.2f";
constexpr const char* kFormatPercent = "%d %%";
constexpr const char* kFormatFractionPercent = "%.2f %%";
constexpr const char* kFormatPercentSplit = "%d%% / %d%%";
constexpr const char* kFormatSquareSize = "%d x %d pixels";
constexpr const char* kFormatMillimetres = "%.0fmm / %.2f\"";
constexpr const char* kFormatMillimetresFine = "%.1fmm / %.2f\"";
constexpr const char* kFormatMinutes = "%dh%02dm (%dm) (%ds)";
constexpr const char* kFormatFieldOfView = "%d Arc Minutes (%d' x %d')";
constexpr const char* kFormatDenoiseScale = "(scale/noise reduction %.2f%%)/(%.2f%%)/(+%.2f bits)";
constexpr const char* kFormatOptimal = "%2.2f (optimal noise and detail)";
constexpr const char* kFormatNoisier = "%2.2f (noisier, extra detail)";
constexpr const char* kFormatSmoother = "%2.2f (smoother, less detail)";
constexpr const char* kFormatShadow = "%d%% shadow dominant";
constexpr const char* kFormatHighlight = "%d%% highlight dominant";
constexpr const char* kTextBalanced = "balanced";

constexpr double kInchesPerMillimetre = 0.0393700787402;
// Position 0 of the square-size member is 2^7 = 128; larger exponents than 30
// would not fit the printed integer.
constexpr uint32_t kSquareBaseExponent = 7;
constexpr uint32_t kSquareMaxExponent = 30;
// The noise/detail member is neutral at this position.
constexpr uint32_t kNoiseDetailNeutral = 100;

// The printed integers are C ints; positions and extents are brought into that
// range through 64-bit arithmetic so that no intermediate step overflows.
int AsInt(int64_t value) {
    return static_cast<int>(value);
}

}  // namespace

// The formats are chosen per member from the constants above; the switch keeps
// each member's arithmetic next to its format.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
size_t ValueLabel_Format(ValueLabelKind kind, const ValueLabelInput& in, char* out, size_t size) {
    if (!out || size == 0) return 0;
    const int64_t v = in.position;
    const int64_t max = in.maximum;
    int n = 0;
    switch (kind) {
        case ValueLabelKind::Plain:
            n = std::snprintf(out, size, kFormatInt, AsInt(v));
            break;
        case ValueLabelKind::PlainPlusOne:
            n = std::snprintf(out, size, kFormatInt, AsInt(v + 1));
            break;
        case ValueLabelKind::Pixels:
            n = std::snprintf(out, size, kFormatPixels, AsInt(v));
            break;
        case ValueLabelKind::PixelsPlusOne:
            n = std::snprintf(out, size, kFormatPixels, AsInt(v + 1));
            break;
        case ValueLabelKind::PixelsFromCentreX:
            n = std::snprintf(out, size, kFormatPixels, AsInt(v - in.extentW / 2));
            break;
        case ValueLabelKind::PixelsFromCentreY:
            n = std::snprintf(out, size, kFormatPixels, AsInt(v - in.extentH / 2));
            break;
        case ValueLabelKind::PixelsAndRestX:
            n = std::snprintf(out, size, kFormatPixelsAndRest, AsInt(v + 1), AsInt(in.extentW - 1 - v));
            break;
        case ValueLabelKind::PixelsAndRestY:
            n = std::snprintf(out, size, kFormatPixelsAndRest, AsInt(v + 1), AsInt(in.extentH - 1 - v));
            break;
        case ValueLabelKind::TenthPixelsFromOne:
            n = std::snprintf(out, size, kFormatTenthPixels, static_cast<double>(v + 10) * 0.1);
            break;
        case ValueLabelKind::SignedPixels:
            n = std::snprintf(out, size, kFormatTenthPixels, static_cast<double>(2 * v - max) * 0.05);
            break;
        case ValueLabelKind::TenthsFromOne:
            n = std::snprintf(out, size, kFormatOneDecimal, static_cast<double>(v + 10) * 0.1);
            break;
        case ValueLabelKind::TenthsFromOneFine:
            n = std::snprintf(out, size, kFormatTwoDecimals, static_cast<double>(v + 10) * 0.1);
            break;
        case ValueLabelKind::Tenths:
            n = std::snprintf(out, size, kFormatTwoDecimals, static_cast<double>(v) * 0.1);
            break;
        case ValueLabelKind::Hundredths:
            n = std::snprintf(out, size, kFormatTwoDecimals, static_cast<double>(v) * 0.01);
            break;
        case ValueLabelKind::HundredthsFromOne:
            n = std::snprintf(out, size, kFormatTwoDecimals, static_cast<double>(v + 100) * 0.01);
            break;
        case ValueLabelKind::Percent:
            n = std::snprintf(out, size, kFormatPercent, AsInt(v));
            break;
        case ValueLabelKind::SignedPercent:
            n = std::snprintf(out, size, kFormatFractionPercent, static_cast<double>(v - 10000) * 0.01);
            break;
        case ValueLabelKind::ComputedPercent:
            n = std::snprintf(out, size, kFormatFractionPercent, in.figures[0] * 0.01);
            break;
        case ValueLabelKind::PercentSplit:
            n = std::snprintf(out, size, kFormatPercentSplit, AsInt(max - v), AsInt(v));
            break;
        case ValueLabelKind::SquareSize: {
            uint32_t exponent = static_cast<uint32_t>(v) + kSquareBaseExponent;
            if (v > kSquareMaxExponent || exponent > kSquareMaxExponent) exponent = kSquareMaxExponent;
            const int side = 1 << exponent;
            n = std::snprintf(out, size, kFormatSquareSize, side, side);
            break;
        }
        case ValueLabelKind::Millimetres:
            n = std::snprintf(out, size, kFormatMillimetres, in.figures[0],
                              in.figures[0] * kInchesPerMillimetre);
            break;
        case ValueLabelKind::MillimetresFine:
            n = std::snprintf(out, size, kFormatMillimetresFine, in.figures[0],
                              in.figures[0] * kInchesPerMillimetre);
            break;
        case ValueLabelKind::Minutes:
            n = std::snprintf(out, size, kFormatMinutes, AsInt(v / 60), AsInt(v % 60), AsInt(v),
                              AsInt(v * 60));
            break;
        case ValueLabelKind::FieldOfView:
            n = std::snprintf(out, size, kFormatFieldOfView, AsInt(v + 1), static_cast<int>(in.figures[0]),
                              static_cast<int>(in.figures[1]));
            break;
        case ValueLabelKind::DenoiseScale:
            n = std::snprintf(out, size, kFormatDenoiseScale, in.figures[0], in.figures[1], in.figures[2]);
            break;
        case ValueLabelKind::NoiseDetail:
            if (v == kNoiseDetailNeutral)
                n = std::snprintf(out, size, kFormatOptimal, 1.0);
            else if (v < kNoiseDetailNeutral)
                n = std::snprintf(out, size, kFormatNoisier, static_cast<double>(v) * 0.01);
            else
                n = std::snprintf(out, size, kFormatSmoother, static_cast<double>(v) * 0.01);
            break;
        case ValueLabelKind::ShadowHighlight: {
            const int64_t mid = max / 2;
            if (v < mid)
                n = std::snprintf(out, size, kFormatShadow, AsInt((mid - v) * 2));
            else if (v > mid)
                n = std::snprintf(out, size, kFormatHighlight, AsInt((v - mid) * 2));
            else
                n = std::snprintf(out, size, "%s", kTextBalanced);
            break;
        }
    }
    if (n < 0) {
        out[0] = '\0';
        return 0;
    }
    return static_cast<size_t>(n) < size ? static_cast<size_t>(n) : size - 1;
}
#pragma GCC diagnostic pop

std::string ValueLabel_Text(ValueLabelKind kind, const ValueLabelInput& input) {
    char text[kValueLabelCapacity];
    const size_t length = ValueLabel_Format(kind, input, text, sizeof text);
    return std::string(text, length);
}

namespace {

// Every number in the text, in order; a minus sign right before a digit belongs to it.
std::vector<double> Numbers(std::string_view text) {
    std::vector<double> numbers;
    const std::string copy(text);
    const char* p = copy.c_str();
    while (*p) {
        const bool negative = *p == '-' && std::isdigit(static_cast<unsigned char>(p[1]));
        if (std::isdigit(static_cast<unsigned char>(*p)) || negative) {
            char* end = nullptr;
            numbers.push_back(std::strtod(p, &end));
            p = end;
        } else {
            ++p;
        }
    }
    return numbers;
}

int64_t Steps(double value, double step) {
    return std::llround(value / step);
}

}  // namespace

bool ValueLabel_Guess(ValueLabelKind kind, std::string_view text, uint32_t maximum, int32_t extentW,
                      int32_t extentH, int64_t* position) {
    const int64_t mid = maximum / 2;
    if (kind == ValueLabelKind::ShadowHighlight && text == kTextBalanced) return *position = mid, true;
    const std::vector<double> n = Numbers(text);
    if (n.empty()) return false;
    const double first = n[0];
    int64_t v = 0;
    switch (kind) {
        case ValueLabelKind::Plain:
        case ValueLabelKind::Pixels:
        case ValueLabelKind::Percent:
            v = Steps(first, 1);
            break;
        case ValueLabelKind::PlainPlusOne:
        case ValueLabelKind::PixelsPlusOne:
        case ValueLabelKind::PixelsAndRestX:
        case ValueLabelKind::PixelsAndRestY:
        case ValueLabelKind::FieldOfView:
            v = Steps(first, 1) - 1;
            break;
        case ValueLabelKind::PixelsFromCentreX:
            v = Steps(first, 1) + extentW / 2;
            break;
        case ValueLabelKind::PixelsFromCentreY:
            v = Steps(first, 1) + extentH / 2;
            break;
        case ValueLabelKind::TenthPixelsFromOne:
        case ValueLabelKind::TenthsFromOne:
        case ValueLabelKind::TenthsFromOneFine:
            v = Steps(first, 0.1) - 10;
            break;
        case ValueLabelKind::SignedPixels:
            v = (Steps(first, 0.05) + int64_t{maximum}) / 2;
            break;
        case ValueLabelKind::Tenths:
            v = Steps(first, 0.1);
            break;
        case ValueLabelKind::Hundredths:
        case ValueLabelKind::NoiseDetail:
        case ValueLabelKind::DenoiseScale:  // its first figure is the position in hundredths
            v = Steps(first, 0.01);
            break;
        case ValueLabelKind::HundredthsFromOne:
            v = Steps(first, 0.01) - 100;
            break;
        case ValueLabelKind::SignedPercent:
            v = Steps(first, 0.01) + 10000;
            break;
        case ValueLabelKind::PercentSplit:
            v = int64_t{maximum} - Steps(first, 1);
            break;
        case ValueLabelKind::SquareSize:
            v = std::llround(std::log2(std::max(first, 1.0))) - int64_t{kSquareBaseExponent};
            break;
        case ValueLabelKind::Minutes:
            if (n.size() < 2) return false;
            v = Steps(first, 1) * 60 + Steps(n[1], 1);
            break;
        case ValueLabelKind::ShadowHighlight:
            v = text.find("shadow") != std::string_view::npos ? mid - Steps(first, 1) / 2
                                                              : mid + Steps(first, 1) / 2;
            break;
        case ValueLabelKind::ComputedPercent:
        case ValueLabelKind::Millimetres:
        case ValueLabelKind::MillimetresFine:
            return false;
    }
    *position = v;
    return true;
}
