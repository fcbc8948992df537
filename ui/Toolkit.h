// The toolkit context: the one per process that holds the framebuffer
// description, the root of the widget tree, the entity tables, the font, the
// theme colours, the open resource archive and the pending toolkit events.
#pragma once

#include "ui/Entities.h"
#include "ui/Widget.h"
#include "ui/archive/Resources_Archive.h"

#include <cstdint>
#include <memory>
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

struct Toolkit {
    // Framebuffer: 32-bit pixels, pixelsPerRow apart.
    uint32_t* framebuffer = nullptr;
    uint32_t screenWidth = 0;
    uint32_t screenHeight = 0;
    uint32_t pixelsPerRow = 0;

    std::unique_ptr<Widget> root;  // a drawing area over the whole framebuffer

    EntityTable systemEntities;  // the built-in entities
    EntityTable markupEntities;  // what ENTITY elements define; survives from form to form

    // Minimal object size in pixels; the metric entities derive from it.
    int32_t minimalObjectSizeX = 1;
    int32_t minimalObjectSizeY = 1;

    std::vector<uint8_t> font;  // the "font.fnt" entry; empty when there is none

    // Theme colours in 5-6-5: the background and the three tints of tinted icons.
    uint16_t background = 0x0000;
    uint16_t tint[3] = {0xFFFF, 0x0000, 0x0000};

    std::unique_ptr<ResourceArchive> archive;
    ToolkitEventRing events;
};

// A context without archive, screen or font: the root widget and the built-in
// entities that need no screen. Toolkit_Create adds the rest.
std::unique_ptr<Toolkit> Toolkit_CreateBare();

// The start-up sequence: opens the archive (ending the process when it is
// missing), measures the screen, defines the system entities and the metrics
// and loads the font.
std::unique_ptr<Toolkit> Toolkit_Create();

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
