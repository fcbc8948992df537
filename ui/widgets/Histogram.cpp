// Counting and drawing of histograms.
#include "ui/widgets/Histogram.h"

#include "image/Image.h"
#include "ui/Theme.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/draw/Draw_Rect.h"
#include "ui/widgets/Widget_Paint.h"

#include <algorithm>
#include <cmath>

namespace {

void Count(const int64_t* plane, const ImageBuffer& image, uint32_t bins, std::vector<uint32_t>* out) {
    out->assign(bins, 0);
    if (!plane) return;
    const int64_t range = image.maxValue + 1;
    for (int32_t y = 0; y < image.height; ++y) {
        const int64_t* row = plane + size_t(y) * size_t(image.stride);
        for (int32_t x = 0; x < image.width; ++x) {
            const int64_t v = std::clamp<int64_t>(row[x], 0, image.maxValue);
            ++(*out)[static_cast<size_t>((v * bins) / range)];
        }
    }
}

void Draw(Toolkit* toolkit, Widget* widget, HistogramRecord* record) {
    WidgetPaint paint = Widget_BeginPaint(toolkit, widget);
    Surface& s = *paint.surface;
    const int32_t gap = std::max(1, Theme_Gap(toolkit) / 2);
    const DrawRect body = Paint_Inset(paint.rect, gap);
    if (Draw_IsEmpty(body)) return;
    Draw_FillRect(s, body, theme::kWell);
    const DrawRect plot = Paint_Inset(body, 2);
    for (int q = 1; q < 4; ++q)
        Draw_FillRect(s, {plot.x + plot.width * q / 4, plot.y, 1, plot.height}, theme::kControlFlat);
    const int channels = record->mono ? 1 : 3;
    const Colour565 colours[3] = {record->mono ? theme::kText : theme::kRed, theme::kGreen, theme::kBlue};
    uint32_t peak = 1;
    for (int c = 0; c < channels; ++c)
        for (uint32_t v : record->bins[c]) peak = std::max(peak, v);
    const double scale = static_cast<double>(plot.height) / std::sqrt(static_cast<double>(peak));
    for (int c = 0; c < channels; ++c) {
        const std::vector<uint32_t>& bins = record->bins[c];
        if (bins.empty()) continue;
        const size_t n = bins.size();
        for (int32_t x = 0; x < plot.width; ++x) {
            const size_t b0 = size_t(x) * n / size_t(plot.width);
            const size_t b1 = std::max(b0 + 1, size_t(x + 1) * n / size_t(plot.width));
            uint32_t v = 0;
            for (size_t b = b0; b < b1 && b < n; ++b) v = std::max(v, bins[b]);
            const int32_t h = static_cast<int32_t>(std::sqrt(static_cast<double>(v)) * scale + 0.5);
            if (h <= 0) continue;
            Draw_BlendRect(s, {plot.x + x, plot.y + plot.height - h, 1, h}, colours[c], 110);
            Draw_BlendRect(s, {plot.x + x, plot.y + plot.height - h, 1, 1}, colours[c], 230);
        }
    }
    Draw_StrokeRect(s, body, 1, theme::kBorder);
}

}  // namespace

int Histogram_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event) {
    auto* record = Widget_Record<HistogramRecord>(widget);
    if (!record || event->code != kEventDraw) return 0;
    Draw(toolkit, widget, record);
    return 1;
}

uint32_t Histogram_BinCount(const Widget* histogram) {
    const auto* record = Widget_Record<HistogramRecord>(histogram);
    if (!record) return 0;
    return record->numBins ? record->numBins : kHistogramDefaultBins;
}

void Histogram_SetImage(Toolkit* toolkit, Widget* histogram, const ImageBuffer* image) {
    auto* record = Widget_Record<HistogramRecord>(histogram);
    if (!record) return;
    const uint32_t bins = Histogram_BinCount(histogram);
    for (auto& b : record->bins) b.clear();
    if (image) {
        record->mono = !(image->green && image->blue);
        Count(image->red, *image, bins, &record->bins[0]);
        if (!record->mono) {
            Count(image->green, *image, bins, &record->bins[1]);
            Count(image->blue, *image, bins, &record->bins[2]);
        }
    }
    Toolkit_Invalidate(toolkit, histogram);
}
