// The widget kinds and their records: what the markup sets on each kind. The
// drawing and pointer behaviour of each kind live in its own file beside them.
#pragma once

#include "ui/ValueLabel.h"
#include "ui/Widget.h"

#include <cstdint>
#include <string>
#include <vector>

enum WidgetKind : uint32_t {
    kWidgetLayout = 1,
    kWidgetButton = 2,
    kWidgetLabel = 3,
    kWidgetField = 4,
    kWidgetFieldMulti = 5,
    kWidgetBitmap = 6,
    kWidgetList = 7,
    kWidgetDrawingArea = 8,  // the context's root
    kWidgetSelector = 9,
    kWidgetLevelSetter = 10,
    kWidgetImageView = 11,
    kWidgetHistogram = 12,
    kWidgetVirtualKeyboard = 13,
    kWidgetApplet = 14,
    kWidgetGestureArea = 15,
    kWidgetCodeBitmap = 17,  // a bitmap made by code
    kWidgetForm = 18,
};

// The nine cells of a layout, as `Quadrant` names them.
enum Quadrant : uint32_t {
    kQuadrantNorthWest = 0,
    kQuadrantNorth = 1,
    kQuadrantNorthEast = 2,
    kQuadrantWest = 3,
    kQuadrantCenter = 4,
    kQuadrantEast = 5,
    kQuadrantSouthWest = 6,
    kQuadrantSouth = 7,
    kQuadrantSouthEast = 8,
};

enum FillMode : uint32_t { kFillAutoFit = 0, kFillAutoFillOut = 1, kFillStretch = 2, kFillNative = 3 };

enum TextAlign : uint32_t { kAlignLeft = 1, kAlignRight = 2, kAlignCenter = 4, kAlignBottom = 8 };

// Corner mask of `Rounded`.
enum RoundedCorner : uint32_t {
    kRoundedTopRight = 1,
    kRoundedTopLeft = 2,
    kRoundedBottomRight = 4,
    kRoundedBottomLeft = 8,
};

// Geometry attributes shared by FORM, PELLUCIDAVIEW, PELLUCIDAHISTOGRAM and
// LAYOUT: the splits (or, for the first three, the rectangle) in normalised
// units and the minimum sizes of the outer bands in pixels. Splits default to
// the whole extent, so a layout without attributes is one centre cell.
struct GeometryRecord {
    int32_t topLeftX = 0;
    int32_t topLeftY = 0;
    int32_t bottomRightX = static_cast<int32_t>(kUnitsWhole);
    int32_t bottomRightY = static_cast<int32_t>(kUnitsWhole);
    int32_t minTopLeftPixelsX = 0;
    int32_t minTopLeftPixelsY = 0;
    int32_t minBottomRightPixelsX = 0;
    int32_t minBottomRightPixelsY = 0;
};

// Keyboard navigation shared by the focusable controls.
struct NavigationRecord {
    uint32_t navLeft = 0;
    uint32_t navRight = 0;
    uint32_t navUp = 0;
    uint32_t navDown = 0;
    char quickKey = 0;
};

struct LayoutRecord : WidgetRecord {
    GeometryRecord geometry;
    NavigationRecord navigation;
    uint32_t quadrant = kQuadrantCenter;  // the cell of the enclosing layout it occupies
    bool metaFocus = false;
    bool fillBackground = false;
};

struct FormRecord : WidgetRecord {
    GeometryRecord geometry;
};

struct ImageViewRecord : WidgetRecord {
    GeometryRecord geometry;
};

struct HistogramRecord : WidgetRecord {
    GeometryRecord geometry;
    uint32_t numBins = 0;
};

struct ButtonRecord : WidgetRecord {
    NavigationRecord navigation;
    std::string text;
    uint32_t textAlign = kAlignCenter;
    std::string resource;  // icon entry
    bool noGloss = false;
    bool flat = false;
    uint32_t rounded = 0;
};

struct LabelRecord : WidgetRecord {
    std::string text;
    uint32_t align = kAlignLeft;
};

struct FieldRecord : WidgetRecord {
    NavigationRecord navigation;
    std::string text;
    uint32_t align = kAlignLeft;
    std::string resource;
};

struct FieldMultiRecord : WidgetRecord {
    NavigationRecord navigation;
    std::string text;
};

struct BitmapRecord : WidgetRecord {
    std::string resource;
    uint32_t align = kAlignCenter;
    uint32_t fillMode = kFillAutoFit;
    bool fillBackground = false;
    std::vector<uint8_t> source;  // the entry, loaded the first time it is drawn
    bool loaded = false;
};

struct ListRecord : WidgetRecord {
    NavigationRecord navigation;
    std::vector<std::string> items;
};

struct SelectorRecord : WidgetRecord {
    NavigationRecord navigation;
    std::vector<std::string> items;
    uint32_t selected = 0;
};

struct LevelSetterRecord : WidgetRecord {
    NavigationRecord navigation;
    uint32_t value = 0;
    uint32_t maximum = 0;
    int32_t extentW = 0;  // the image size, for the offset members of the value label
    int32_t extentH = 0;
    ValueLabelKind labelKind = ValueLabelKind::Plain;
    ValueLabelFiguresFn figures = nullptr;  // for the members whose figures a module computes
    void* figuresUser = nullptr;
    Widget* captionLabel = nullptr;  // child widgets of the setter
    Widget* valueLabel = nullptr;
};

struct AppletRecord : WidgetRecord {
    NavigationRecord navigation;
};

struct VirtualKeyboardRecord : WidgetRecord {
    bool numbersOnly = false;
};

struct GestureAreaRecord : WidgetRecord {};
