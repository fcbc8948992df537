// Filling the toolkit's test form.
#include "ui/TestForm.h"

#include "ui/Layout.h"
#include "ui/Toolkit.h"
#include "ui/WidgetKinds.h"
#include "ui/markup/Markup_Form.h"
#include "ui/widgets/Field.h"
#include "ui/widgets/Histogram.h"
#include "ui/widgets/ImageView.h"
#include "ui/widgets/LevelSetter.h"
#include "ui/widgets/List.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

namespace {

uint32_t NextRandom(uint32_t* state) {
    *state = *state * 1664525u + 1013904223u;
    return *state >> 8;
}

Widget* Find(Toolkit* toolkit, const char* id) {
    return Widget_FindById(toolkit->root.get(), Widget_PackId(id));
}

// The test form's two sliders say what they would in a module: a balance
// around mid-travel and a radius in tenths of a pixel from 1.0.
std::string BalanceText(void*, const LevelSetterRecord& setter, uint32_t v) {
    const int mid = int(setter.maximum / 2), value = int(v);
    char text[48];
    if (value < mid)
        std::snprintf(text, sizeof text, "%d%% shadow dominant", (mid - value) * 2);
    else if (value > mid)
        std::snprintf(text, sizeof text, "%d%% highlight dominant", (value - mid) * 2);
    else
        return "balanced";
    return text;
}

std::string RadiusText(void*, const LevelSetterRecord&, uint32_t v) {
    char text[32];
    std::snprintf(text, sizeof text, "%2.1f pixels", (v + 10) * 0.1);
    return text;
}

}  // namespace

ImagePtr TestForm_StarField(int32_t width, int32_t height) {
    ImagePtr image(Image_Create(width, height));
    if (!image) return image;
    image->bitDepth = 16;
    image->maxValue = 65535;
    const double cx = width * 0.55, cy = height * 0.45, r = std::min(width, height) * 0.35;
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) {
            const double dx = (x - cx) / r, dy = (y - cy) / (r * 0.7);
            const double nebula = std::exp(-(dx * dx + dy * dy) * 1.6);
            const double sky = 2200.0 + 250.0 * y / height;
            const size_t i = size_t(y) * size_t(image->stride) + size_t(x);
            image->red[i] = static_cast<int64_t>(sky + 14000.0 * nebula);
            image->green[i] = static_cast<int64_t>(sky + 5000.0 * nebula * nebula);
            image->blue[i] = static_cast<int64_t>(sky + 300.0 + 9000.0 * nebula * (1.0 - nebula * 0.5));
        }
    }
    uint32_t seed = 20260112;
    const int stars = std::max(40, width * height / 900);
    for (int s = 0; s < stars; ++s) {
        const int32_t sx = static_cast<int32_t>(NextRandom(&seed) % uint32_t(width));
        const int32_t sy = static_cast<int32_t>(NextRandom(&seed) % uint32_t(height));
        const double peak =
            4000.0 + (NextRandom(&seed) % 60000u) * ((NextRandom(&seed) % 8u) == 0 ? 1.0 : 0.25);
        const double sigma = 0.6 + peak / 40000.0;
        const double warm = (NextRandom(&seed) % 100u) / 100.0;
        const int32_t reach = static_cast<int32_t>(sigma * 3.0) + 1;
        for (int32_t y = std::max(0, sy - reach); y <= std::min(height - 1, sy + reach); ++y)
            for (int32_t x = std::max(0, sx - reach); x <= std::min(width - 1, sx + reach); ++x) {
                const double d2 = double(x - sx) * (x - sx) + double(y - sy) * (y - sy);
                const double v = peak * std::exp(-d2 / (2.0 * sigma * sigma));
                const size_t i = size_t(y) * size_t(image->stride) + size_t(x);
                image->red[i] = std::min<int64_t>(65535, image->red[i] + int64_t(v * (0.8 + 0.2 * warm)));
                image->green[i] = std::min<int64_t>(65535, image->green[i] + int64_t(v * 0.9));
                image->blue[i] = std::min<int64_t>(65535, image->blue[i] + int64_t(v * (1.0 - 0.2 * warm)));
            }
    }
    return image;
}

Widget* TestForm_Load(Toolkit* toolkit, TestFormContent* content) {
    Widget* form = Form_Load(toolkit, kTestFormEntry, nullptr);
    if (!form) return nullptr;
    Layout_Apply(toolkit, toolkit->root.get());

    content->image = TestForm_StarField(480, 320);
    content->lut.resize(kImageViewLutSize);
    for (size_t i = 0; i < content->lut.size(); ++i) {
        // Black point above the sky, then a square-root stretch.
        const double v = std::clamp((double(i) - 2000.0) / 40000.0, 0.0, 1.0);
        content->lut[i] = static_cast<uint8_t>(std::lround(255.0 * std::sqrt(v)));
    }
    if (Widget* view = Find(toolkit, "View"))
        ImageView_SetImage(toolkit, view, content->image.get(), content->lut.data());
    // The histogram shows the image as stretched for the screen, where its tones spread out.
    content->stretched.reset(Image_Clone(content->image.get()));
    if (content->stretched) {
        ImageBuffer& s = *content->stretched;
        for (int64_t* plane : {s.red, s.green, s.blue})
            for (size_t i = 0; i < size_t(s.stride) * size_t(s.height); ++i)
                plane[i] = int64_t{content->lut[static_cast<size_t>(plane[i])]} * 257;
    }
    if (Widget* histogram = Find(toolkit, "Hist"))
        Histogram_SetImage(toolkit, histogram, content->stretched.get());
    if (Widget* setter = Find(toolkit, "LvS0")) {
        LevelSetter_Setup(toolkit, setter, 200, 90, BalanceText);
        LevelSetter_SetCaption(toolkit, setter, "Balance");
    }
    if (Widget* setter = Find(toolkit, "LvS1")) {
        LevelSetter_Setup(toolkit, setter, 190, 15, RadiusText);
        LevelSetter_SetCaption(toolkit, setter, "Radius");
    }
    if (Widget* list = Find(toolkit, "Lst0")) {
        List_SetItems(toolkit, list, {"Luminance", "Red", "Green", "Blue", "H-alpha", "OIII", "SII"});
        List_Select(toolkit, list, 1);
    }
    if (Widget* notes = Find(toolkit, "Fml0"))
        Field_SetText(toolkit, notes, "M42, 64 x 120 s\nBortle 4, no moon");
    return form;
}
