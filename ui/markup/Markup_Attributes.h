// The attributes an element may carry and how each value is read.
#pragma once

#include "ui/WidgetKinds.h"
#include "ui/markup/Markup_Reader.h"

#include <cstdint>
#include <string>
#include <vector>

struct Toolkit;

enum MarkupAttributeBit : uint64_t {
    kAttrId = 1ull << 0,
    kAttrNavLeft = 1ull << 1,
    kAttrNavRight = 1ull << 2,
    kAttrNavUp = 1ull << 3,
    kAttrNavDown = 1ull << 4,
    kAttrQuickKey = 1ull << 5,
    kAttrTopLeftX = 1ull << 6,
    kAttrTopLeftY = 1ull << 7,
    kAttrBottomRightX = 1ull << 8,
    kAttrBottomRightY = 1ull << 9,
    kAttrMinTopLeftPixelsX = 1ull << 10,
    kAttrMinTopLeftPixelsY = 1ull << 11,
    kAttrMinBottomRightPixelsX = 1ull << 12,
    kAttrMinBottomRightPixelsY = 1ull << 13,
    kAttrQuadrant = 1ull << 14,
    kAttrMetaFocus = 1ull << 15,
    kAttrFillBackground = 1ull << 16,
    kAttrText = 1ull << 17,
    kAttrTextAlign = 1ull << 18,
    kAttrAlign = 1ull << 19,
    kAttrResource = 1ull << 20,
    kAttrNoGloss = 1ull << 21,
    kAttrFlat = 1ull << 22,
    kAttrRounded = 1ull << 23,
    kAttrFillMode = 1ull << 24,
    kAttrItem = 1ull << 25,
    kAttrNumBins = 1ull << 26,
    kAttrNumbersOnly = 1ull << 27,
    kAttrCondition = 1ull << 28,
    kAttrString = 1ull << 29,
    kAttrReference = 1ull << 30,
};

inline constexpr uint64_t kAttrNavigation = kAttrNavLeft | kAttrNavRight | kAttrNavUp | kAttrNavDown;
inline constexpr uint64_t kAttrGeometry =
    kAttrTopLeftX | kAttrTopLeftY | kAttrBottomRightX | kAttrBottomRightY | kAttrMinTopLeftPixelsX |
    kAttrMinTopLeftPixelsY | kAttrMinBottomRightPixelsX | kAttrMinBottomRightPixelsY;

// The attribute values of the element being read.
struct MarkupValues {
    uint32_t id = 0;
    NavigationRecord navigation;
    GeometryRecord geometry;
    uint32_t quadrant = kQuadrantCenter;
    bool metaFocus = false;
    bool fillBackground = false;
    bool noGloss = false;
    bool flat = false;
    bool numbersOnly = false;
    std::string text;
    uint32_t textAlign = kAlignCenter;
    uint32_t align = kAlignLeft;
    bool alignGiven = false;
    std::string resource;
    uint32_t fillMode = kFillAutoFit;
    uint32_t rounded = 0;
    uint32_t numBins = 0;
    std::vector<std::string> items;
    std::string condition;
    bool hasString = false;
    bool hasReference = false;
    std::string string;
    std::string reference;
};

// Reads the tag's attributes that `allowed` registers for its element into
// `values`; the others are ignored. A registered name is matched whole, so
// "ID" does not take "NavLeftID".
void Markup_ReadAttributes(const Toolkit* toolkit, const MarkupTag& tag, uint64_t allowed,
                           MarkupValues* values);

// A geometry value: "n%" is (n << 15) / 100, "SmallestObjectSizeX"/"Y" the
// minimal object size in pixels, anything else a decimal integer.
int32_t Markup_GeometryValue(const Toolkit* toolkit, const std::string& value);
