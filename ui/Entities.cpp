// The built-in and metric entities of the toolkit context.
#include "ui/Entities.h"

#include "host/Host.h"
#include "ui/Toolkit.h"

#include <algorithm>
#include <cstdlib>
#include <string>

namespace {

// Built-in entities of a new context, in the order they are defined.
struct BuiltIn {
    const char* name;
    const char* value;
};
constexpr BuiltIn kBuiltIns[] = {
    {"&ouml;", "&#xc3;&#xb6;"},  // the UTF-8 bytes of the letter, as references
    {"&lf;", "\n"},
    {kEntityLanguage, "english"},
    {"&system-onscreenkeyboard;", "false"},
    {"&system-quickkey;", "false"},
    {"&system-userhandedness;", "right"},
    {"&system-osname;", "unknown"},
};

constexpr const char* kOrientationLandscape = "landscape";
constexpr const char* kOrientationPortrait = "portrait";

constexpr int32_t kScreenDivisor = 18;  // the minimal object size is 1/18 of the shorter side
constexpr int32_t kNormalCap = 48;
constexpr uint32_t kUnscaledPercent = 100;
constexpr uint32_t kMaxScalePercent = 400;

void DefineNumber(EntityTable* table, const char* name, int64_t value) {
    Entity_Define(table, name, std::to_string(value).c_str());
}

uint32_t PixelFrom565(uint16_t colour) {
    const uint32_t c = colour;
    return ((c >> 11) << 19) | (((c >> 5) & 63) << 10) | ((c & 31) << 3);
}

}  // namespace

const char* Toolkit_LookupEntity(const Toolkit* toolkit, std::string_view reference) {
    if (!toolkit) return nullptr;
    if (const char* value = Entity_Lookup(&toolkit->markupEntities, reference)) return value;
    return Entity_Lookup(&toolkit->systemEntities, reference);
}

void Toolkit_DefineSystemEntities(Toolkit* toolkit) {
    for (const BuiltIn& entity : kBuiltIns)
        Entity_Define(&toolkit->systemEntities, entity.name, entity.value);
}

void Toolkit_SetScreen(Toolkit* toolkit, uint32_t width, uint32_t height, uint32_t pixelsPerRow,
                       uint32_t* framebuffer) {
    toolkit->screenWidth = width;
    toolkit->screenHeight = height;
    toolkit->pixelsPerRow = pixelsPerRow;
    toolkit->framebuffer = framebuffer;
    // A square screen counts as portrait.
    Entity_Define(&toolkit->systemEntities, kEntityOrientation,
                  width > height ? kOrientationLandscape : kOrientationPortrait);
}

void Toolkit_MeasureScreen(Toolkit* toolkit) {
    // Pre-filled: a call to an absent driver leaves the defaults.
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t pixelsPerRow = 0;
    uint32_t* framebuffer = nullptr;
    Host_Call("video", "Video_GetWidth", &width);
    Host_Call("video", "Video_GetHeight", &height);
    Host_Call("video", "Video_GetPixelsPerRow", &pixelsPerRow);
    Host_Call("video", "Video_GetFramebuffer", &framebuffer);
    Toolkit_SetScreen(toolkit, width, height, pixelsPerRow, framebuffer);
    if (!framebuffer) return;
    const uint32_t pixel = PixelFrom565(toolkit->background);
    for (uint32_t row = 0; row < height; ++row) {
        uint32_t* line = framebuffer + size_t{row} * pixelsPerRow;
        for (uint32_t x = 0; x < pixelsPerRow; ++x) line[x] = pixel;
    }
}

void Toolkit_SetMinimalObjectSize(Toolkit* toolkit, int32_t sx, int32_t sy, int32_t maxX, int32_t maxY) {
    if (sx > maxX || sy > maxY) {
        sx = maxX;
        sy = maxY;
    }
    const int32_t half = sx / 2;
    toolkit->minimalObjectSizeX = sx == 0 ? 1 : sx;
    toolkit->minimalObjectSizeY = sy == 0 ? 1 : sy;
    const int32_t m = toolkit->minimalObjectSizeX;
    const double md = m;
    EntityTable* table = &toolkit->systemEntities;
    DefineNumber(table, "&system-minimalobjectsizepixelsHalf;", half);
    DefineNumber(table, kEntitySliderHeight, static_cast<int64_t>(md * 0.75));
    // The button size equals the slider height on purpose.
    DefineNumber(table, kEntityButtonSize, static_cast<int64_t>(md * 0.75));
    DefineNumber(table, "&system-buttonSizePixelsX2;", static_cast<int64_t>(md * 1.5));
    DefineNumber(table, "&system-buttonSizePixelsX3;", static_cast<int64_t>(md * 2.25));
    DefineNumber(table, kEntityLabelInset, static_cast<int64_t>(md * 0.33));
    DefineNumber(table, kEntityMinimalObjectSize, m);
    for (int k = 2; k <= 16; ++k) {
        const std::string name = "&system-minimalobjectsizepixelsX" + std::to_string(k) + ";";
        DefineNumber(table, name.c_str(), int64_t{m} * k);
    }
}

void Toolkit_MeasureDisplayScale(Toolkit* toolkit) {
    uint32_t percent = kUnscaledPercent;  // pre-filled: an absent driver leaves it
    Host_Call("video", "Video_GetDisplayScale", &percent);
    toolkit->displayScalePercent = std::clamp(percent, kUnscaledPercent, kMaxScalePercent);
}

void Toolkit_SetMetricsFromScreen(Toolkit* toolkit) {
    const uint32_t shorter =
        toolkit->screenWidth < toolkit->screenHeight ? toolkit->screenWidth : toolkit->screenHeight;
    const int32_t s = static_cast<int32_t>(shorter / kScreenDivisor);
    // The cap keeps controls at a comfortable size on large screens; on a dense
    // one the same comfortable size takes more pixels. Below the cap the screen
    // share already grows with the density.
    const int32_t cap = static_cast<int32_t>(kNormalCap * toolkit->displayScalePercent / kUnscaledPercent);
    Toolkit_SetMinimalObjectSize(toolkit, s, s, cap, cap);
}

int32_t Toolkit_MetricPixels(const Toolkit* toolkit, const char* name) {
    const char* value = toolkit ? Entity_Lookup(&toolkit->systemEntities, name) : nullptr;
    return value ? static_cast<int32_t>(std::strtol(value, nullptr, 10)) : 0;
}
