// The node of the user-interface tree. Every element of a form that makes a
// widget, and every widget made by code, is one Widget: an identifier, a kind,
// a rectangle in normalised units of its parent (32768 is the whole parent), a
// handler, its children in document order and the kind's own record.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

struct Toolkit;
struct Widget;

// Normalised units: 32768 spans the parent; pixels = (units * parent pixels) >> 15.
inline constexpr uint32_t kUnitsWhole = 32768;
inline constexpr int kUnitsShift = 15;

// Toolkit event codes carried in the fourth field of a WidgetEvent.
enum WidgetEventCode : uint32_t {
    kEventTick = 2,
    kEventDraw = 8,
    kEventResized = 16,
    kEventPress = 64,
    kEventRelease = 128,
    kEventDrag = 256,
    kEventCharacter = 2048,
};

// The record handed to a handler: three payload words (pointer x, y and
// button, or the character code), then the event code.
struct WidgetEvent {
    uint32_t payload[3] = {0, 0, 0};
    uint32_t code = 0;
};

// Draws the widget or reacts to the event; returns 1 when it handled it.
using WidgetHandler = int (*)(Toolkit* toolkit, Widget* widget, const WidgetEvent* event);

// What the dispatcher needs of a widget kind: one row per kind in the kind
// table the toolkit is created with (ui/widgets/WidgetKinds_Table.h), so that
// dispatching never has to know the kinds themselves.
struct WidgetKindRow {
    uint32_t kind = 0;
    WidgetHandler handler = nullptr;  // for widgets that bring no handler of their own
    // Whether the widget takes the pointer, so a hit test stops at it; null: never.
    bool (*takesPointer)(const Widget* widget) = nullptr;
};

// Base of every kind's record (WidgetKinds.h); owned by its widget.
struct WidgetRecord {
    virtual ~WidgetRecord() = default;
};

struct Widget {
    uint32_t id = 0;
    uint32_t type = 0;
    uint32_t x = 0;
    uint32_t y = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    WidgetHandler handler = nullptr;
    std::vector<std::unique_ptr<Widget>> children;
    Widget* parent = nullptr;
    std::unique_ptr<WidgetRecord> data;
};

// Packs up to four bytes, the first most significant; missing bytes are 0
// ("BTOK" is 0x42544F4B, "AB" is 0x41420000).
constexpr uint32_t Widget_PackId(const char* text) {
    uint32_t id = 0;
    int i = 0;
    for (; i < 4 && text && text[i]; ++i) id = (id << 8) | static_cast<uint8_t>(text[i]);
    for (; i < 4; ++i) id <<= 8;
    return id;
}

// Depth-first, pre-order: `start` first, then each child's whole subtree in turn.
Widget* Widget_FindById(Widget* start, uint32_t id);

// Appends a new child of the given kind and returns it.
Widget* Widget_AddChild(Widget* parent, uint32_t type);

// Removes `child` from its parent and frees it with its subtree.
void Widget_Destroy(Widget* child);

// The kind record as `Record`, or null when the widget holds another kind.
template <class Record>
Record* Widget_Record(Widget* widget) {
    return widget ? dynamic_cast<Record*>(widget->data.get()) : nullptr;
}
template <class Record>
const Record* Widget_Record(const Widget* widget) {
    return widget ? dynamic_cast<const Record*>(widget->data.get()) : nullptr;
}
