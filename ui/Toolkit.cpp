// The services the toolkit context offers every widget.
#include "ui/Toolkit.h"

namespace {

constexpr const char* kFontEntry = "font.fnt";

}  // namespace

bool Toolkit_LoadFont(Toolkit* toolkit) {
    // An entry that is not a font leaves the toolkit without one.
    const std::vector<uint8_t> bytes = Resources_LoadWhole(toolkit, kFontEntry);
    toolkit->font = Font_Load(bytes.data(), bytes.size());
    return toolkit->font != nullptr;
}

int32_t Toolkit_TextHeight(const Toolkit* toolkit) {
    return static_cast<int32_t>(toolkit->minimalObjectSizeY * 0.38);
}

std::vector<uint8_t> Resources_LoadWhole(Toolkit* toolkit, const char* name) {
    if (!toolkit || !toolkit->archive) return {};
    return ResourceArchive_LoadWhole(toolkit->archive.get(), name);
}

PixelRect Widget_PixelRect(const Toolkit* toolkit, const Widget* widget) {
    // Walk up to the root, then convert from the outside in.
    std::vector<const Widget*> chain;
    for (const Widget* w = widget; w; w = w->parent) chain.push_back(w);
    // Edges are converted, not sizes, so that neighbouring cells meet without a gap.
    PixelRect rect;
    rect.width = static_cast<int32_t>(toolkit->screenWidth);
    rect.height = static_cast<int32_t>(toolkit->screenHeight);
    for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
        const Widget* w = *it;
        const int64_t parentW = rect.width;
        const int64_t parentH = rect.height;
        const int64_t left = (int64_t{w->x} * parentW) >> kUnitsShift;
        const int64_t top = (int64_t{w->y} * parentH) >> kUnitsShift;
        const int64_t right = ((int64_t{w->x} + w->width) * parentW) >> kUnitsShift;
        const int64_t bottom = ((int64_t{w->y} + w->height) * parentH) >> kUnitsShift;
        rect.x += static_cast<int32_t>(left);
        rect.y += static_cast<int32_t>(top);
        rect.width = static_cast<int32_t>(right - left);
        rect.height = static_cast<int32_t>(bottom - top);
    }
    return rect;
}
