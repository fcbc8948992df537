// Creating the toolkit context and the services it offers every widget.
#include "ui/Toolkit.h"

#include "ui/WidgetKinds.h"
#include "ui/archive/Resources_Open.h"

namespace {

constexpr const char* kFontEntry = "font.fnt";
constexpr const char kFontSignature[] = {'S', 'Q', 'F'};

bool IsFont(const std::vector<uint8_t>& data) {
    return data.size() >= 3 && data[0] == kFontSignature[0] && data[1] == kFontSignature[1] &&
           data[2] == kFontSignature[2];
}

}  // namespace

std::unique_ptr<Toolkit> Toolkit_CreateBare() {
    auto toolkit = std::make_unique<Toolkit>();
    toolkit->root = std::make_unique<Widget>();
    toolkit->root->type = kWidgetDrawingArea;
    toolkit->root->width = kUnitsWhole;
    toolkit->root->height = kUnitsWhole;
    Toolkit_DefineSystemEntities(toolkit.get());
    return toolkit;
}

std::unique_ptr<Toolkit> Toolkit_Create() {
    auto toolkit = std::make_unique<Toolkit>();
    toolkit->archive = Resources_Open();
    toolkit->root = std::make_unique<Widget>();
    toolkit->root->type = kWidgetDrawingArea;
    toolkit->root->width = kUnitsWhole;
    toolkit->root->height = kUnitsWhole;
    Toolkit_MeasureScreen(toolkit.get());
    Toolkit_DefineSystemEntities(toolkit.get());
    Toolkit_SetMetricsFromScreen(toolkit.get());
    // An entry that is not a font leaves the toolkit without one.
    std::vector<uint8_t> font = Resources_LoadWhole(toolkit.get(), kFontEntry);
    if (IsFont(font)) toolkit->font = std::move(font);
    return toolkit;
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
