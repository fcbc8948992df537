// The widget kinds and their records: what the markup sets on each kind. The
// drawing and pointer behaviour of each kind live in its own file beside them.
#pragma once

#include "ui/Widget.h"
#include "ui/draw/Draw_Colour.h"

#include <cstdint>
#include <string>
#include <vector>

struct ImageBuffer;

// What a control calls when the user changed it (a button pressed, a value
// moved, an item chosen, a line entered).
using WidgetCallback = void (*)(Toolkit* toolkit, Widget* widget, void* user);

// A rectangle dragged on an image view, in image pixels.
struct ImageRegion {
    int32_t x = 0;
    int32_t y = 0;
    int32_t width = 0;
    int32_t height = 0;
};
using ImageRegionCallback = void (*)(Toolkit* toolkit, Widget* view, const ImageRegion& region, void* user);

// Ticks for applets: the count of collapsed timer ticks and the running total.
using AppletTickFn = void (*)(Toolkit* toolkit, Widget* applet, uint32_t ticks, uint32_t elapsed, void* user);

// Gestures seen by a gesture area: the event code (press, drag, release) and the pointer.
using GestureFn = void (*)(Toolkit* toolkit, Widget* area, uint32_t code, int32_t x, int32_t y, void* user);

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

// A form created on top of the screen by code (a message box, the progress
// dialog): it keeps what lies beneath from the pointer and the keyboard while
// it is up (ui/widgets/Form.h opens and closes it).
struct ModalFormRecord : FormRecord {
    Colour565 panel = 0;
    bool pushed = false;  // whether its state went onto the stack (not for a tenth box)
    // Places the children again for the current screen size.
    void (*relayout)(Toolkit* toolkit, Widget* form) = nullptr;
};

// Zoom is in percent; with `fit` set the zoom was chosen to fit the image into
// the view. The centre is the image point shown in the middle of the view, in
// 1/256 pixel. `lut` maps 16-bit image values to 8-bit screen values
// (65536 entries, owned by the caller); null uses the linear table.
// What the image view drew last and from what (see ImageView.cpp).
struct ImageViewDrawn {
    std::vector<uint32_t> pixels;  // the view's whole rectangle, row after row
    const ImageBuffer* image = nullptr;
    const uint8_t* lut = nullptr;
    bool lutPerChannel = false;
    int32_t zoom = 0;
    int64_t centreX = 0, centreY = 0;
    int32_t x = 0, y = 0, width = 0, height = 0;
};

struct ImageViewRecord : WidgetRecord {
    GeometryRecord geometry;
    const ImageBuffer* image = nullptr;  // owned by the caller
    const uint8_t* lut = nullptr;
    bool lutPerChannel = false;  // lut holds three tables: red, green, blue
    int32_t zoom = 100;
    bool fit = true;
    int64_t centreX = 0;
    int64_t centreY = 0;
    // Pointer: a plain drag pans; with regionSelect set it drags a rectangle
    // that regionCallback receives on release.
    bool regionSelect = false;
    ImageRegionCallback regionCallback = nullptr;
    void* regionUser = nullptr;
    bool dragging = false;
    int32_t dragX = 0, dragY = 0;  // where the press landed, in pixels
    int64_t dragCentreX = 0, dragCentreY = 0;
    int32_t dragToX = 0, dragToY = 0;  // the pointer now
    ImageViewDrawn drawn;
};

// Bins per channel (red, green, blue; a mono image fills the first only).
struct HistogramRecord : WidgetRecord {
    GeometryRecord geometry;
    uint32_t numBins = 0;
    std::vector<uint32_t> bins[3];
    bool mono = false;
};

struct ButtonRecord : WidgetRecord {
    NavigationRecord navigation;
    std::string text;
    uint32_t textAlign = kAlignCenter;
    std::string resource;  // icon entry
    bool noGloss = false;
    bool flat = false;
    uint32_t rounded = 0;
    bool pressed = false;              // the pointer is down on it
    bool disabled = false;             // greyed out; ignores the pointer and quick keys
    WidgetCallback onPress = nullptr;  // on release inside the button
    void* user = nullptr;
    struct {
        std::vector<uint8_t> bytes;  // the icon entry, loaded the first time it is drawn
        bool loaded = false;
    } iconCache;
};

struct LabelRecord : WidgetRecord {
    std::string text;
    uint32_t align = kAlignLeft;
};

// Fields keep a caret as a byte offset into the UTF-8 text.
struct FieldRecord : WidgetRecord {
    NavigationRecord navigation;
    std::string text;
    uint32_t align = kAlignLeft;
    std::string resource;
    size_t caret = std::string::npos;  // npos: at the end
    WidgetCallback onEnter = nullptr;  // Enter pressed
    WidgetCallback onChange = nullptr;
    void* user = nullptr;
};

struct FieldMultiRecord : WidgetRecord {
    NavigationRecord navigation;
    std::string text;
    size_t caret = std::string::npos;
    WidgetCallback onChange = nullptr;
    void* user = nullptr;
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
    int32_t selected = -1;  // none
    int32_t firstVisible = 0;
    WidgetCallback onSelect = nullptr;
    void* user = nullptr;
};

struct SelectorRecord : WidgetRecord {
    NavigationRecord navigation;
    std::vector<std::string> items;
    uint32_t selected = 0;
    WidgetCallback onChange = nullptr;
    void* user = nullptr;
};

struct LevelSetterRecord;
// Formats a position of the setter for its value label; `user` is the pointer
// installed with it (a module's parameter row).
using LevelSetterFormatFn = std::string (*)(void* user, const LevelSetterRecord& setter, uint32_t position);

struct LevelSetterRecord : WidgetRecord {
    NavigationRecord navigation;
    uint32_t value = 0;
    uint32_t maximum = 0;
    int32_t extentW = 0;  // the image size, for the offset members of the value label
    int32_t extentH = 0;
    LevelSetterFormatFn format = nullptr;  // the value label's text; the plain number when null
    void* formatUser = nullptr;
    Widget* captionLabel = nullptr;  // child widgets of the setter
    Widget* valueLabel = nullptr;
    WidgetCallback onChange = nullptr;  // the position moved (while dragging, too)
    void* user = nullptr;
    bool dragging = false;
    bool disabled = false;  // greyed out: the knob stays where it is
};

struct AppletRecord : WidgetRecord {
    NavigationRecord navigation;
    AppletTickFn onTick = nullptr;
    void* user = nullptr;
    uint32_t elapsed = 0;  // ticks received so far
};

struct VirtualKeyboardRecord : WidgetRecord {
    bool numbersOnly = false;
};

struct GestureAreaRecord : WidgetRecord {
    GestureFn onGesture = nullptr;
    void* user = nullptr;
};
