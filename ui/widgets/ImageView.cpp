// Drawing, zooming, panning and region dragging of the image view.
#include "ui/widgets/ImageView.h"

#include "image/Image.h"
#include "ui/Theme.h"
#include "ui/Toolkit.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/Toolkit_Events.h"
#include "ui/draw/Draw_Rect.h"
#include "ui/widgets/Widget_Paint.h"

#include <algorithm>
#include <vector>

namespace {

constexpr int32_t kLevels[] = {5, 10, 25, 33, 50, 66, 100, 150, 200, 300, 400, 800, 1600, 3200};

int32_t FitZoom(int32_t width, int32_t height, const PixelRect& r) {
    if (width <= 0 || height <= 0) return 100;
    const int64_t zx = int64_t{r.width} * 100 / width;
    const int64_t zy = int64_t{r.height} * 100 / height;
    return static_cast<int32_t>(std::clamp<int64_t>(std::min(zx, zy), 1, 3200));
}

// Brings the fit flag's zoom and centre up to date for the view's size.
void Settle(const Toolkit* toolkit, Widget* view, ImageViewRecord* record) {
    if (!record->image || !record->fit) return;
    record->zoom = FitZoom(record->image->width, record->image->height, Widget_PixelRect(toolkit, view));
    record->centreX = int64_t{record->image->width} * 128;
    record->centreY = int64_t{record->image->height} * 128;
}

// Image coordinate, in 1/256 pixel, of screen offset d from the view's centre.
int64_t ImageAt(int64_t centre, int64_t d, int32_t zoom) {
    return centre + (d * 256 * 100) / zoom;
}

int32_t ToScreenValue(int64_t sample, int shift) {
    const int64_t v = shift >= 0 ? sample >> shift : sample << -shift;
    return static_cast<int32_t>(std::clamp<int64_t>(v, 0, 65535));
}

// A 4 x 4 ordered dither spreads the step between two 5-6-5 levels over
// neighbouring pixels, so that smooth nebulosity shows no contour bands.
constexpr uint8_t kBayer[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};

bool SameDrawing(const ImageViewDrawn& a, const ImageViewDrawn& b) {
    return a.image == b.image && a.lut == b.lut && a.lutPerChannel == b.lutPerChannel && a.zoom == b.zoom &&
           a.centreX == b.centreX && a.centreY == b.centreY && a.x == b.x && a.y == b.y &&
           a.width == b.width && a.height == b.height;
}

// The 8-bit screen values of one image row at the visible columns only
// (`column` holds the image column of each screen column, -1 off the image):
// a fitted 24-megapixel image shows a quarter of its columns or fewer, so
// converting whole rows would do most of the work for nothing. Worked out once
// however many screen rows show that image row.
void ConvertRow(const ImageBuffer& image, int64_t iy, const uint8_t* lut, bool perChannel,
                const std::vector<int32_t>& column, uint8_t* rgb) {
    const int shift = image.bitDepth - 16;
    const size_t row = static_cast<size_t>(iy) * static_cast<size_t>(image.stride);
    const bool colour = image.green && image.blue;
    const int64_t* planes[3] = {image.red + row, colour ? image.green + row : image.red + row,
                                colour ? image.blue + row : image.red + row};
    const size_t n = column.size();
    for (int c = 0; c < 3; ++c) {
        const int64_t* src = planes[c];
        uint8_t* out = rgb + size_t(c) * n;
        const uint8_t* table = lut && perChannel ? lut + size_t(c) * kImageViewLutSize : lut;
        for (size_t x = 0; x < n; ++x) {
            const int32_t ix = column[x];
            if (ix < 0) continue;
            const int32_t v16 = ToScreenValue(src[ix], shift);
            out[x] = table ? table[v16] : static_cast<uint8_t>(v16 >> 8);
        }
    }
}

// The whole of `rect` into `dst` (its rows `stride` pixels apart, (0, 0) at
// the rectangle's corner): the well where the image does not reach, the image
// dithered by screen position elsewhere.
void RenderImage(uint32_t* dst, size_t stride, const DrawRect& rect, const ImageViewRecord& record) {
    const ImageBuffer& image = *record.image;
    Surface well = Draw_MakeSurface(dst, int32_t(stride), rect.width, rect.height);
    Draw_FillRect(well, {0, 0, rect.width, rect.height}, theme::kWell);
    if (!image.red) return;
    const int64_t midX = rect.width / 2, midY = rect.height / 2;
    const size_t n = static_cast<size_t>(rect.width);
    std::vector<int32_t> column(n);
    for (size_t x = 0; x < n; ++x) {
        const int64_t ix = ImageAt(record.centreX, int64_t(x) - midX, record.zoom) >> 8;
        column[x] = (ix >= 0 && ix < image.width) ? static_cast<int32_t>(ix) : -1;
    }
    std::vector<uint8_t> rgb(n * 3);
    const uint8_t* r8 = rgb.data();
    const uint8_t* g8 = r8 + n;
    const uint8_t* b8 = g8 + n;
    int64_t converted = -1;
    for (int32_t y = 0; y < rect.height; ++y) {
        const int64_t iy = ImageAt(record.centreY, y - midY, record.zoom) >> 8;
        if (iy < 0 || iy >= image.height) continue;
        if (iy != converted) {
            ConvertRow(image, iy, record.lut, record.lutPerChannel, column, rgb.data());
            converted = iy;
        }
        uint32_t* out = dst + size_t(y) * stride;
        const uint8_t* dither = kBayer[(rect.y + y) & 3];
        for (size_t x = 0; x < n; ++x) {
            if (column[x] < 0) continue;
            // Brought to 5-6-5, as every framebuffer pixel is kept: a threshold of
            // 0..7 (0..3 for green's finer steps) before truncation.
            const uint32_t d = dither[(rect.x + x) & 3];
            const uint32_t r5 = std::min<uint32_t>((r8[x] + (d >> 1)) >> 3, 31);
            const uint32_t g6 = std::min<uint32_t>((g8[x] + (d >> 2)) >> 2, 63);
            const uint32_t b5 = std::min<uint32_t>((b8[x] + (d >> 1)) >> 3, 31);
            out[x] = (r5 << 19) | (g6 << 10) | (b5 << 3);
        }
    }
}

// A redraw that changes neither the image, its tables, the zoom, the centre
// nor the view's place copies the pixels drawn last time: a 24-megapixel image
// costs a pass over a quarter of its samples to convert, a box closing over
// it should not.
void DrawImage(const Surface& s, const DrawRect& rect, ImageViewRecord& record) {
    const DrawRect visible = Draw_Intersect(s.clip, rect);
    if (Draw_IsEmpty(visible)) return;
    ImageViewDrawn& drawn = record.drawn;
    const ImageViewDrawn key{{},          record.image,   record.lut,     record.lutPerChannel,
                             record.zoom, record.centreX, record.centreY, rect.x,
                             rect.y,      rect.width,     rect.height};
    if (drawn.pixels.empty() || !SameDrawing(drawn, key)) {
        drawn = key;
        drawn.pixels.resize(size_t(rect.width) * size_t(rect.height));
        RenderImage(drawn.pixels.data(), size_t(rect.width), rect, record);
    }
    for (int32_t y = visible.y; y < visible.y + visible.height; ++y) {
        const uint32_t* from =
            drawn.pixels.data() + size_t(y - rect.y) * size_t(rect.width) + (visible.x - rect.x);
        std::copy_n(from, visible.width, s.pixels + size_t(y) * size_t(s.pixelsPerRow) + visible.x);
    }
}

void Draw(Toolkit* toolkit, Widget* widget, ImageViewRecord* record) {
    WidgetPaint paint = Widget_BeginPaint(toolkit, widget);
    Surface& s = *paint.surface;
    Draw_FillRect(s, paint.rect, theme::kWell);
    if (record->image) {
        Settle(toolkit, widget, record);
        DrawImage(s, paint.rect, *record);
    }
    if (record->regionSelect && record->dragging) {
        const int32_t x0 = std::min(record->dragX, record->dragToX),
                      y0 = std::min(record->dragY, record->dragToY);
        const DrawRect area{x0, y0, std::abs(record->dragToX - record->dragX) + 1,
                            std::abs(record->dragToY - record->dragY) + 1};
        Draw_BlendRect(s, area, theme::kAccent, 40);
        Draw_StrokeRect(s, area, 1, theme::kAccent);
    }
    Draw_StrokeRect(s, paint.rect, 1, theme::kBorder);
}

void Region(Toolkit* toolkit, Widget* view, ImageViewRecord* record) {
    if (!record->regionCallback || !record->image) return;
    int32_t ax, ay, bx, by;
    ImageView_ImagePoint(toolkit, view, record->dragX, record->dragY, &ax, &ay);
    ImageView_ImagePoint(toolkit, view, record->dragToX, record->dragToY, &bx, &by);
    const auto clampX = [&](int32_t v) { return std::clamp(v, 0, record->image->width - 1); };
    const auto clampY = [&](int32_t v) { return std::clamp(v, 0, record->image->height - 1); };
    ax = clampX(ax), bx = clampX(bx), ay = clampY(ay), by = clampY(by);
    ImageRegion region{std::min(ax, bx), std::min(ay, by), std::abs(bx - ax) + 1, std::abs(by - ay) + 1};
    record->regionCallback(toolkit, view, region, record->regionUser);
}

void Rezoom(Toolkit* toolkit, Widget* view, int32_t zoom) {
    auto* record = Widget_Record<ImageViewRecord>(view);
    if (!record) return;
    Settle(toolkit, view, record);
    record->zoom = std::clamp(zoom, 1, 3200);
    record->fit = false;
    Toolkit_PostEvent(toolkit, view, kEventDraw);
}

}  // namespace

int ImageView_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event) {
    auto* record = Widget_Record<ImageViewRecord>(widget);
    if (!record) return 0;
    const int32_t x = static_cast<int32_t>(event->payload[0]), y = static_cast<int32_t>(event->payload[1]);
    switch (event->code) {
        case kEventDraw:
            Draw(toolkit, widget, record);
            return 1;
        case kEventPress:
            Settle(toolkit, widget, record);
            record->dragging = true;
            record->dragX = record->dragToX = x;
            record->dragY = record->dragToY = y;
            record->dragCentreX = record->centreX;
            record->dragCentreY = record->centreY;
            return 1;
        case kEventDrag:
            if (!record->dragging) return 1;
            record->dragToX = x;
            record->dragToY = y;
            if (!record->regionSelect && record->image) {
                record->fit = false;
                record->centreX =
                    record->dragCentreX - (int64_t{x - record->dragX} * 256 * 100) / record->zoom;
                record->centreY =
                    record->dragCentreY - (int64_t{y - record->dragY} * 256 * 100) / record->zoom;
            }
            Toolkit_Invalidate(toolkit, widget);
            return 1;
        case kEventRelease:
            if (!record->dragging) return 1;
            record->dragToX = x;
            record->dragToY = y;
            record->dragging = false;
            if (record->regionSelect) {
                Toolkit_Invalidate(toolkit, widget);
                Region(toolkit, widget, record);
            }
            return 1;
        default:
            return 0;
    }
}

void ImageView_SetImage(Toolkit* toolkit, Widget* view, const ImageBuffer* image, const uint8_t* lut) {
    auto* record = Widget_Record<ImageViewRecord>(view);
    if (!record) return;
    record->image = image;
    record->lut = lut;
    record->lutPerChannel = false;
    record->drawn.pixels.clear();
    record->fit = true;
    record->dragging = false;
    Settle(toolkit, view, record);
    Toolkit_Invalidate(toolkit, view);
}

void ImageView_SetZoom(Toolkit* toolkit, Widget* view, int32_t zoom) {
    Rezoom(toolkit, view, zoom);
}

void ImageView_Fit(Toolkit* toolkit, Widget* view) {
    auto* record = Widget_Record<ImageViewRecord>(view);
    if (!record) return;
    record->fit = true;
    Settle(toolkit, view, record);
    Toolkit_PostEvent(toolkit, view, kEventDraw);
}

int32_t ImageView_ZoomInLevel(int32_t zoom) {
    // Zooming in never lands on the lowest level: anything below 10 goes to 10.
    for (int32_t level : kLevels)
        if (level > kLevels[0] && zoom < level) return level;
    return zoom;
}

int32_t ImageView_ZoomOutLevel(int32_t zoom) {
    if (zoom > 3200) return zoom;
    int32_t result = kLevels[0];
    for (int32_t level : kLevels)
        if (level < zoom) result = level;
    return result;
}

void ImageView_ZoomIn(Toolkit* toolkit, Widget* view) {
    Rezoom(toolkit, view, ImageView_ZoomInLevel(ImageView_Zoom(toolkit, view)));
}

void ImageView_ZoomOut(Toolkit* toolkit, Widget* view) {
    Rezoom(toolkit, view, ImageView_ZoomOutLevel(ImageView_Zoom(toolkit, view)));
}

int32_t ImageView_Zoom(const Toolkit* toolkit, Widget* view) {
    auto* record = Widget_Record<ImageViewRecord>(view);
    if (!record) return 0;
    Settle(toolkit, view, record);
    return record->zoom;
}

int32_t ImageView_FitZoomFor(const Toolkit* toolkit, Widget* view, int32_t width, int32_t height) {
    return FitZoom(width, height, Widget_PixelRect(toolkit, view));
}

void ImageView_SetRegionCallback(Widget* view, ImageRegionCallback callback, void* user) {
    if (auto* record = Widget_Record<ImageViewRecord>(view)) {
        record->regionCallback = callback;
        record->regionUser = user;
        record->regionSelect = callback != nullptr;
    }
}

bool ImageView_ImagePoint(const Toolkit* toolkit, Widget* view, int32_t x, int32_t y, int32_t* imageX,
                          int32_t* imageY) {
    auto* record = Widget_Record<ImageViewRecord>(view);
    if (!record || !record->image) return false;
    Settle(toolkit, view, record);
    const PixelRect r = Widget_PixelRect(toolkit, view);
    const int64_t ix = ImageAt(record->centreX, x - (r.x + r.width / 2), record->zoom) >> 8;
    const int64_t iy = ImageAt(record->centreY, y - (r.y + r.height / 2), record->zoom) >> 8;
    *imageX = static_cast<int32_t>(ix);
    *imageY = static_cast<int32_t>(iy);
    return ix >= 0 && iy >= 0 && ix < record->image->width && iy < record->image->height;
}

void ImageView_SetTables(Toolkit* toolkit, Widget* view, const uint8_t* lut, bool perChannel) {
    auto* record = Widget_Record<ImageViewRecord>(view);
    if (!record) return;
    record->lut = lut;
    record->lutPerChannel = perChannel && lut;
    record->drawn.pixels.clear();
    Toolkit_Invalidate(toolkit, view);
}
