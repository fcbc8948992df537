// The toolkit context: the one per process that holds the framebuffer
// description, the root of the widget tree, the entity tables, the font, the
// theme colours, the open resource archive and the pending toolkit events.
#pragma once

#include "ui/Entity_Table.h"
#include "ui/Widget.h"
#include "ui/archive/Resources_Archive.h"
#include "ui/draw/Draw_Surface.h"
#include "ui/font/Font.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

// One pending toolkit event: the widget it is for, its code and payload.
struct ToolkitEvent {
    Widget* widget = nullptr;
    uint32_t code = 0;
    uint32_t payload[3] = {0, 0, 0};
};

inline constexpr uint32_t kToolkitEventRingSize = 16384;

struct ToolkitEventRing {
    std::vector<ToolkitEvent> entries = std::vector<ToolkitEvent>(kToolkitEventRingSize);
    uint32_t readIndex = 0;
    uint32_t pending = 0;
};

// Pointer capture, keyboard focus and what the last redraw touched: the
// dispatcher's state (Toolkit_Dispatch.h).
struct ToolkitInput {
    Widget* capture = nullptr;  // the widget a press landed on; drags and the release go to it
    Widget* focus = nullptr;    // receives characters
    bool pointerDown = false;
    bool postedDown = false;  // the button state Toolkit_PostPointer last posted
    int32_t pointerX = 0;
    int32_t pointerY = 0;
    bool drawn = false;  // something was drawn since the last blit
    DrawRect drawnArea;  // the union of what was drawn
};

// What a message box saves before it is built and restores when it closes:
// the form on top and the values that belong to it (five words).
struct ToolkitDrawState {
    Widget* form = nullptr;
    Widget* focus = nullptr;
    uint32_t screenWidth = 0;
    uint32_t screenHeight = 0;
    uint32_t flags = 0;
};
inline constexpr uint32_t kToolkitSavedStates = 9;

struct Toolkit {
    // Framebuffer: 32-bit pixels, pixelsPerRow apart.
    uint32_t* framebuffer = nullptr;
    uint32_t screenWidth = 0;
    uint32_t screenHeight = 0;
    uint32_t pixelsPerRow = 0;

    std::unique_ptr<Widget> root;          // a drawing area over the whole framebuffer
    std::span<const WidgetKindRow> kinds;  // handler and pointer rule of each widget kind

    EntityTable systemEntities;  // the built-in entities
    EntityTable markupEntities;  // what ENTITY elements define; survives from form to form

    // The desktop's interface scale in percent: 200 on a 4K screen set to
    // double size. It raises the cap on the minimal object size.
    uint32_t displayScalePercent = 100;

    // Minimal object size in pixels; the metric entities derive from it.
    int32_t minimalObjectSizeX = 1;
    int32_t minimalObjectSizeY = 1;

    std::unique_ptr<Font> font;  // loaded from "font.fnt"; null when there is none

    // Theme colours in 5-6-5: the background and the three tints of tinted icons.
    uint16_t background = 0x0000;
    uint16_t tint[3] = {0xFFFF, 0x0000, 0x0000};

    std::unique_ptr<ResourceArchive> archive;
    ToolkitEventRing events;

    ToolkitInput input;
    Surface paint;                  // the framebuffer, clipped to the widget being drawn
    Widget* currentForm = nullptr;  // the form on top: the root, or the newest modal box
    ToolkitDrawState savedStates[kToolkitSavedStates];
    uint32_t savedCount = 0;
    // Closed boxes, freed once the event that closed them has been dispatched
    // (their own handlers are still running when they close).
    std::vector<std::unique_ptr<Widget>> retired;
};

// Loads an archive entry whole through the context's archive; empty when the
// entry is missing or empty.
std::vector<uint8_t> Resources_LoadWhole(Toolkit* toolkit, const char* name);

// The widget's rectangle in framebuffer pixels, following its parents up to the root.
struct PixelRect {
    int32_t x = 0;
    int32_t y = 0;
    int32_t width = 0;
    int32_t height = 0;
};
PixelRect Widget_PixelRect(const Toolkit* toolkit, const Widget* widget);

// The pixel height of the toolkit's text: trunc(M * 0.38) of the vertical
// minimal object size M.
int32_t Toolkit_TextHeight(const Toolkit* toolkit);

// Loads "font.fnt" from the archive into the context; false when it is
// missing or not a font.
bool Toolkit_LoadFont(Toolkit* toolkit);
