// The two HTML exports. Each takes its template from the resource archive and
// puts its pictures into it as base64 JPEG text in place of the marker names,
// so the page needs no companion files. The stereo page gets the image and
// its depth map (scaled by the depth strength) and makes its views in the
// browser, with the module's largest parallax at white; the VR page gets the two
// views already placed on their 360 degree canvases.
#include "app/Export.h"

#include "formats/File_Names.h"
#include "formats/File_SafeWrite.h"
#include "formats/Png_Read.h"
#include "host/CursorWaitScope.h"
#include "host/Shell_Log.h"
#include "modules/bin/Bin_Kernel.h"
#include "ui/Toolkit.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace {

constexpr const char* kStereoLogLine = "Stereo image exported [";
constexpr const char* kVrLogLine = "VR image exported [";

bool IsHtmlName(const char* name) {
    return name && (File_HasExtension(name, "html") || File_HasExtension(name, "htm"));
}

std::string LoadTemplate(Toolkit* ui, const char* entry) {
    if (!ui) return {};
    const std::vector<uint8_t> bytes = Resources_LoadWhole(ui, entry);
    return std::string(bytes.begin(), bytes.end());
}

void ReplaceAll(std::string* text, std::string_view mark, const std::string& by) {
    for (size_t at = text->find(mark); at != std::string::npos; at = text->find(mark, at + by.size()))
        text->replace(at, mark.size(), by);
}

bool WriteText(const char* name, const std::string& text) {
    return File_SafeWrite(name, reinterpret_cast<const uint8_t*>(text.data()), text.size()) == 1;
}

// The picture at most kExportVrMaxView on its longer side.
ImagePtr Reduced(const ImageBuffer* image, int32_t s) {
    const int32_t longer = std::max(image->width, image->height);
    if (longer <= s) return ImagePtr(Image_Clone(image));
    return ImagePtr(BinImage(image, double(s) / longer, nullptr));
}

// The badge in the archive, at the canvas's depth; null when it cannot be had.
ImagePtr LoadBadge(Toolkit* ui, int bitDepth) {
    if (!ui) return nullptr;
    const std::vector<uint8_t> png = Resources_LoadWhole(ui, kVrBadge);
    ImagePtr badge(png.empty() ? nullptr : Png_ReadMemory(png.data(), png.size()));
    if (badge) Image_SetBitDepth(badge.get(), bitDepth);
    return badge;
}

// Draws `top` with its centre at (cx, cy), clipped to the canvas, through its alpha when it has one.
void Blend(ImageBuffer* canvas, const ImageBuffer& top, int32_t cx, int32_t cy) {
    const int32_t x0 = cx - top.width / 2, y0 = cy - top.height / 2;
    int64_t* to[3] = {canvas->red, canvas->green, canvas->blue};
    const int64_t* from[3] = {top.red, top.green, top.blue};
    for (int32_t y = std::max(0, -y0); y < top.height && y0 + y < canvas->height; ++y)
        for (int32_t x = std::max(0, -x0); x < top.width && x0 + x < canvas->width; ++x) {
            const size_t s = size_t(y) * size_t(top.stride) + size_t(x);
            const size_t d = size_t(y0 + y) * size_t(canvas->stride) + size_t(x0 + x);
            const int64_t a = top.alpha ? top.alpha[s] : top.maxValue;
            for (int c = 0; c < 3; ++c)
                to[c][d] = (from[c][s] * a + to[c][d] * (top.maxValue - a)) / top.maxValue;
        }
}

}  // namespace

int32_t Export_VrBaseSize(const ImageBuffer* image) {
    return std::min(std::max(image->width, image->height), kExportVrMaxView);
}

ImagePtr Export_VrCanvas(const ImageBuffer* view, int32_t s, const ImageBuffer* badge) {
    ImagePtr canvas(Image_CreateCleared(4 * s, 2 * s));
    canvas->bitDepth = view->bitDepth;
    canvas->maxValue = view->maxValue;
    // A view wider than the canvas (larger than its base size) is cut to it.
    const int32_t left = 2 * s - view->width / 2, top = s / 2;
    const int32_t skip = std::max(0, -left), columns = std::min(view->width - skip, canvas->width);
    int64_t* to[3] = {canvas->red, canvas->green, canvas->blue};
    const int64_t* from[3] = {view->red, view->green, view->blue};
    for (int c = 0; c < 3; ++c)
        for (int32_t y = 0; y < view->height && top + y < canvas->height; ++y)
            std::copy_n(from[c] + size_t(y) * size_t(view->stride) + size_t(skip), columns,
                        to[c] + size_t(top + y) * size_t(canvas->stride) + size_t(left + skip));
    // Halves on both edges: wrapped round the sphere they meet behind the viewer.
    if (badge)
        for (const int32_t edge : {0, 4 * s}) Blend(canvas.get(), *badge, edge, top + view->height / 2);
    return canvas;
}

int Export_StereoHtml(const char* name, const ExportSource& source) {
    CursorWaitScope wait;
    if (!IsHtmlName(name)) return 0;
    std::string page =
        source.image && source.depth ? LoadTemplate(source.ui, kStereoTemplate) : std::string();
    if (!page.empty()) {
        // The page's parallax at white is the module's largest: the depth map
        // carries the depth strength.
        const ImagePtr depth(Image_Clone(source.depth));
        const double strength = std::clamp(source.settings.strength, 0.0, 1.0);
        for (int64_t* plane : {depth->red, depth->green, depth->blue})
            for (size_t i = 0, n = size_t(depth->stride) * size_t(depth->height); i < n; ++i)
                plane[i] = int64_t(double(plane[i]) * strength);
        ReplaceAll(&page, kStereoImageMark, Export_JpegBase64(source.image));
        ReplaceAll(&page, kStereoDepthMark, Export_JpegBase64(depth.get()));
        WriteText(name, page);
    }
    Shell_Logf("%s%s%s].\n", source.parameters.c_str(), kStereoLogLine, name);
    return 0;
}

int Export_VrHtml(const char* name, const ExportSource& source) {
    CursorWaitScope wait;
    if (!IsHtmlName(name) || !source.image || !source.depth) return 0;
    std::string page = LoadTemplate(source.ui, kVrTemplate);
    if (page.empty()) return 0;
    const int32_t s = Export_VrBaseSize(source.image);
    const ImagePtr image = Reduced(source.image, s), depth = Reduced(source.depth, s);
    ImagePtr left, right;
    if (!image || !depth || !Stereo_Views(image.get(), depth.get(), source.settings, nullptr, &left, &right))
        return 0;
    const ImagePtr badge = LoadBadge(source.ui, image->bitDepth);
    // One canvas at a time: at the largest base size each holds 4096 x 2048 pixels.
    for (auto [view, mark] : {std::pair{left.get(), kVrLeftMark}, std::pair{right.get(), kVrRightMark}})
        ReplaceAll(&page, mark, Export_JpegBase64(Export_VrCanvas(view, s, badge.get()).get()));
    WriteText(name, page);
    Shell_Logf("%s%s%s].\n", source.parameters.c_str(), kVrLogLine, name);
    return 0;
}
