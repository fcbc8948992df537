// Drawing of bitmaps: .sqi through the icon decoder, PNG decoded once and
// scaled by the fill mode.
#include "ui/widgets/Bitmap.h"

#include "ui/Theme.h"
#include "ui/Toolkit.h"
#include "ui/WidgetKinds.h"
#include "ui/archive/Sqi_Decode.h"
#include "ui/draw/Draw_Blit.h"
#include "ui/draw/Draw_Rect.h"
#include "ui/widgets/Widget_Paint.h"

#include <lodepng.h>

#include <algorithm>
#include <cstring>

namespace {

bool EndsWith(const std::string& s, const char* tail) {
    const size_t n = std::strlen(tail);
    return s.size() >= n && s.compare(s.size() - n, n, tail) == 0;
}

// A decoded PNG, kept after the entry bytes with a small header: width, height, then 0xAARRGGBB pixels.
constexpr uint32_t kDecodedTag = 0x50504E47;  // marks a cache that holds pixels, not the file

bool DecodePng(std::vector<uint8_t>* cache) {
    std::vector<uint8_t> rgba;
    unsigned w = 0, h = 0;
    if (lodepng::decode(rgba, w, h, cache->data(), cache->size()) != 0 || w == 0 || h == 0) return false;
    std::vector<uint8_t> out(12 + size_t{w} * h * 4);
    const uint32_t header[3] = {kDecodedTag, w, h};
    std::memcpy(out.data(), header, 12);
    auto* pixels = reinterpret_cast<uint32_t*>(out.data() + 12);
    for (size_t i = 0; i < size_t{w} * h; ++i)
        pixels[i] = (uint32_t{rgba[i * 4 + 3]} << 24) | (uint32_t{rgba[i * 4]} << 16) |
                    (uint32_t{rgba[i * 4 + 1]} << 8) | rgba[i * 4 + 2];
    *cache = std::move(out);
    return true;
}

// Nearest-neighbour scaling of the decoded picture into the placement, one
// source column table per call and no work per pixel beyond the lookups.
void DrawPng(const Surface& surface, const std::vector<uint8_t>& cache, const DrawRect& rect,
             uint32_t fillMode) {
    uint32_t header[3];
    std::memcpy(header, cache.data(), 12);
    const int32_t w = static_cast<int32_t>(header[1]), h = static_cast<int32_t>(header[2]);
    const auto* pixels = reinterpret_cast<const uint32_t*>(cache.data() + 12);
    const DrawRect place = Bitmap_Place(w, h, rect, fillMode);
    if (Draw_IsEmpty(place)) return;
    if (place.width == w && place.height == h) {
        Draw_BlitBlend(surface, place.x, place.y, {pixels, w, w, h});
        return;
    }
    const DrawRect visible = Draw_Intersect(surface.clip, place);
    if (Draw_IsEmpty(visible)) return;
    std::vector<uint32_t> row(static_cast<size_t>(visible.width));
    std::vector<int32_t> column(static_cast<size_t>(visible.width));
    for (int32_t x = 0; x < visible.width; ++x)
        column[x] = static_cast<int32_t>((int64_t{visible.x + x - place.x} * w) / place.width);
    for (int32_t y = 0; y < visible.height; ++y) {
        const int32_t sy = static_cast<int32_t>((int64_t{visible.y + y - place.y} * h) / place.height);
        const uint32_t* src = pixels + size_t(sy) * w;
        for (int32_t x = 0; x < visible.width; ++x) row[x] = src[column[x]];
        Draw_BlitBlend(surface, visible.x, visible.y + y, {row.data(), visible.width, visible.width, 1});
    }
}

}  // namespace

DrawRect Bitmap_Place(int32_t w, int32_t h, const DrawRect& rect, uint32_t fillMode) {
    if (w <= 0 || h <= 0 || rect.width <= 0 || rect.height <= 0) return {};
    int32_t dw = rect.width, dh = rect.height;
    switch (fillMode) {
        case kFillAutoFit:
        case kFillAutoFillOut: {
            const bool widthLimits = int64_t{rect.width} * h <= int64_t{rect.height} * w;
            const bool useWidth = fillMode == kFillAutoFit ? widthLimits : !widthLimits;
            if (useWidth) {
                dw = rect.width;
                dh = static_cast<int32_t>(int64_t{h} * rect.width / w);
            } else {
                dh = rect.height;
                dw = static_cast<int32_t>(int64_t{w} * rect.height / h);
            }
            break;
        }
        case kFillNative:
            dw = w, dh = h;
            break;
        default:
            break;
    }
    return {rect.x + (rect.width - dw) / 2, rect.y + (rect.height - dh) / 2, dw, dh};
}

bool Bitmap_DrawResource(Toolkit* toolkit, const std::string& name, std::vector<uint8_t>* cache, bool* loaded,
                         const DrawRect& rect, uint32_t fillMode) {
    if (!*loaded) {
        *cache = Resources_LoadWhole(toolkit, name.c_str());
        *loaded = true;
        if (EndsWith(name, ".png") && !DecodePng(cache)) cache->clear();
    }
    Surface& surface = toolkit->paint;
    if (cache->empty() || !surface.pixels) return false;
    if (EndsWith(name, ".png")) {
        DrawPng(surface, *cache, rect, fillMode);
        return true;
    }
    // The icon decoder clips to the framebuffer and the rectangle; it is given the clipped rectangle's
    // framebuffer so that it cannot draw outside the widget being drawn.
    SqiTarget target;
    target.pixels = surface.pixels;
    target.pixelsPerRow = static_cast<uint32_t>(surface.pixelsPerRow);
    target.framebufferWidth = static_cast<uint32_t>(surface.clip.x + surface.clip.width);
    target.framebufferHeight = static_cast<uint32_t>(surface.clip.y + surface.clip.height);
    target.x = rect.x;
    target.y = rect.y;
    target.width = rect.width;
    target.height = rect.height;
    target.fillMode = fillMode;
    std::copy(std::begin(toolkit->tint), std::end(toolkit->tint), target.tint);
    return Sqi_Draw(cache->data(), cache->size(), target);
}

int Bitmap_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event) {
    if (event->code != kEventDraw) return 0;
    auto* record = Widget_Record<BitmapRecord>(widget);
    if (!record) return 1;
    WidgetPaint paint = Widget_BeginPaint(toolkit, widget);
    if (record->fillBackground) Draw_FillRect(*paint.surface, paint.rect, theme::kWell);
    Bitmap_DrawResource(toolkit, record->resource, &record->source, &record->loaded, paint.rect,
                        record->fillMode);
    return 1;
}
