// Reading attribute values: identifiers, geometry, the word vocabularies and flags.
#include "ui/markup/Markup_Attributes.h"

#include "ui/Toolkit.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

struct Word {
    const char* word;
    uint32_t code;
};

constexpr Word kQuadrants[] = {
    {"NorthWest", kQuadrantNorthWest}, {"North", kQuadrantNorth},   {"NorthEast", kQuadrantNorthEast},
    {"West", kQuadrantWest},           {"Center", kQuadrantCenter}, {"East", kQuadrantEast},
    {"SouthWest", kQuadrantSouthWest}, {"South", kQuadrantSouth},   {"SouthEast", kQuadrantSouthEast},
};
constexpr Word kFillModes[] = {
    {"AutoFit", kFillAutoFit},
    {"AutoFillOut", kFillAutoFillOut},
    {"Stretch", kFillStretch},
    {"Native", kFillNative},
};
constexpr Word kCorners[] = {
    {"TopRight", 1}, {"TopLeft", 2}, {"BottomRight", 4}, {"BottomLeft", 8}, {"Top", 3},
    {"Right", 5},    {"Left", 10},   {"Bottom", 12},     {"Full", 15},
};
constexpr Word kAlignments[] = {
    {"Left", kAlignLeft},
    {"Right", kAlignRight},
    {"Center", kAlignCenter},
    {"Bottom", kAlignBottom},
};

constexpr int64_t kPercentBound = 1000000;
constexpr const char* kSmallestObjectSizeX = "SmallestObjectSizeX";
constexpr const char* kSmallestObjectSizeY = "SmallestObjectSizeY";

// Words are matched exactly; an unknown word leaves the current code.
template <size_t N>
void MatchWord(const Word (&words)[N], const std::string& value, uint32_t* code) {
    for (const Word& w : words)
        if (value == w.word) {
            *code = w.code;
            return;
        }
}

struct AttributeName {
    const char* name;
    uint64_t bit;
};
constexpr AttributeName kAttributes[] = {
    {"ID", kAttrId},
    {"NavLeftID", kAttrNavLeft},
    {"NavRightID", kAttrNavRight},
    {"NavUpID", kAttrNavUp},
    {"NavDownID", kAttrNavDown},
    {"QuickKey", kAttrQuickKey},
    {"TopLeftX", kAttrTopLeftX},
    {"TopLeftY", kAttrTopLeftY},
    {"BottomRightX", kAttrBottomRightX},
    {"BottomRightY", kAttrBottomRightY},
    {"MinTopLeftPixelsX", kAttrMinTopLeftPixelsX},
    {"MinTopLeftPixelsY", kAttrMinTopLeftPixelsY},
    {"MinBottomRightPixelsX", kAttrMinBottomRightPixelsX},
    {"MinBottomRightPixelsY", kAttrMinBottomRightPixelsY},
    {"Quadrant", kAttrQuadrant},
    {"MetaFocus", kAttrMetaFocus},
    {"FillBackground", kAttrFillBackground},
    {"Text", kAttrText},
    {"TextAlign", kAttrTextAlign},
    {"Align", kAttrAlign},
    {"Resource", kAttrResource},
    {"NoGloss", kAttrNoGloss},
    {"Flat", kAttrFlat},
    {"Rounded", kAttrRounded},
    {"FillMode", kAttrFillMode},
    {"Item", kAttrItem},
    {"NumBins", kAttrNumBins},
    {"NumbersOnly", kAttrNumbersOnly},
    {"Condition", kAttrCondition},
    {"STRING", kAttrString},
    {"REFERENCE", kAttrReference},
};

uint64_t BitOf(const std::string& name) {
    for (const AttributeName& a : kAttributes)
        if (name == a.name) return a.bit;
    return 0;
}

int32_t DecimalOf(const std::string& value) {
    return static_cast<int32_t>(std::strtol(value.c_str(), nullptr, 10));
}

}  // namespace

int32_t Markup_GeometryValue(const Toolkit* toolkit, const std::string& value) {
    if (!value.empty() && value.back() == '%') {
        // Bounded so that no percentage, however wrong, overflows the arithmetic.
        const int64_t n =
            std::clamp<int64_t>(std::strtol(value.c_str(), nullptr, 10), -kPercentBound, kPercentBound);
        return static_cast<int32_t>((n * 32768) / 100);
    }
    if (value == kSmallestObjectSizeX) return toolkit ? toolkit->minimalObjectSizeX : 1;
    if (value == kSmallestObjectSizeY) return toolkit ? toolkit->minimalObjectSizeY : 1;
    return DecimalOf(value);
}

void Markup_ReadAttributes(const Toolkit* toolkit, const MarkupTag& tag, uint64_t allowed, MarkupValues* v) {
    for (const MarkupAttribute& attribute : tag.attributes) {
        const uint64_t bit = BitOf(attribute.name) & allowed;
        if (!bit) continue;
        const std::string& value = attribute.value;
        switch (bit) {
            case kAttrId:
                v->id = Widget_PackId(value.c_str());
                break;
            case kAttrNavLeft:
                v->navigation.navLeft = Widget_PackId(value.c_str());
                break;
            case kAttrNavRight:
                v->navigation.navRight = Widget_PackId(value.c_str());
                break;
            case kAttrNavUp:
                v->navigation.navUp = Widget_PackId(value.c_str());
                break;
            case kAttrNavDown:
                v->navigation.navDown = Widget_PackId(value.c_str());
                break;
            case kAttrQuickKey:
                v->navigation.quickKey = value.empty() ? 0 : value[0];
                break;
            case kAttrTopLeftX:
                v->geometry.topLeftX = Markup_GeometryValue(toolkit, value);
                break;
            case kAttrTopLeftY:
                v->geometry.topLeftY = Markup_GeometryValue(toolkit, value);
                break;
            case kAttrBottomRightX:
                v->geometry.bottomRightX = Markup_GeometryValue(toolkit, value);
                break;
            case kAttrBottomRightY:
                v->geometry.bottomRightY = Markup_GeometryValue(toolkit, value);
                break;
            case kAttrMinTopLeftPixelsX:
                v->geometry.minTopLeftPixelsX = Markup_GeometryValue(toolkit, value);
                break;
            case kAttrMinTopLeftPixelsY:
                v->geometry.minTopLeftPixelsY = Markup_GeometryValue(toolkit, value);
                break;
            case kAttrMinBottomRightPixelsX:
                v->geometry.minBottomRightPixelsX = Markup_GeometryValue(toolkit, value);
                break;
            case kAttrMinBottomRightPixelsY:
                v->geometry.minBottomRightPixelsY = Markup_GeometryValue(toolkit, value);
                break;
            case kAttrQuadrant:
                MatchWord(kQuadrants, value, &v->quadrant);
                break;
            case kAttrMetaFocus:
                v->metaFocus = true;
                break;
            case kAttrFillBackground:
                v->fillBackground = true;
                break;
            case kAttrText:
                v->text = value;
                break;
            case kAttrTextAlign:
                MatchWord(kAlignments, value, &v->textAlign);
                break;
            case kAttrAlign:
                MatchWord(kAlignments, value, &v->align);
                v->alignGiven = true;
                break;
            case kAttrResource:
                v->resource = value;
                break;
            case kAttrNoGloss:
                v->noGloss = true;
                break;
            case kAttrFlat:
                v->flat = true;
                break;
            case kAttrRounded:
                MatchWord(kCorners, value, &v->rounded);
                break;
            case kAttrFillMode:
                MatchWord(kFillModes, value, &v->fillMode);
                break;
            case kAttrItem:
                v->items.push_back(value);
                break;
            case kAttrNumBins:
                v->numBins = static_cast<uint32_t>(DecimalOf(value));
                break;
            case kAttrNumbersOnly:
                v->numbersOnly = true;
                break;
            case kAttrCondition:
                v->condition = value;
                break;
            case kAttrString:
                v->string = value;
                v->hasString = attribute.hasValue;
                break;
            case kAttrReference:
                v->reference = value;
                v->hasReference = attribute.hasValue;
                break;
            default:
                break;
        }
    }
}
