// Crop rectangle arithmetic and the cut.
#include "modules/crop/Crop_Kernel.h"

#include "image/Image.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

CropRect Crop_Order(const CropRect& rect) {
    CropRect r = rect;
    if (r.x0 > r.x1) std::swap(r.x0, r.x1);
    if (r.y0 > r.y1) std::swap(r.y0, r.y1);
    return r;
}

namespace {

// Grows the pair [lo, hi] by g on both sides and shifts it back inside
// 0..extent - 1 instead of cutting it.
void GrowInside(int32_t* lo, int32_t* hi, int32_t g, int32_t extent) {
    *lo -= g;
    *hi += g;
    if (*lo < 0) {
        *hi -= *lo;
        *lo = 0;
    }
    if (*hi >= extent) {
        *lo = std::max(*lo - (*hi - (extent - 1)), 0);
        *hi = extent - 1;
    }
}

}  // namespace

CropRect ApplyAspect(const CropRect& rect, float ratio, AspectMode mode, int32_t width, int32_t height) {
    CropRect r = Crop_Order(rect);
    const int32_t dx = r.x1 - r.x0, dy = r.y1 - r.y0;
    if (dx != 0 && dy != 0) {
        const float a = static_cast<float>(dx) / static_cast<float>(dy);
        if (mode == AspectMode::Shrink) {
            if (a > ratio) {
                const int32_t d = (dx - static_cast<int32_t>(static_cast<float>(dx) * (ratio / a))) / 2;
                r.x0 += d;
                r.x1 -= d;
            } else {
                const int32_t d = (dy - static_cast<int32_t>(static_cast<float>(dy) * (a / ratio))) / 2;
                r.y0 += d;
                r.y1 -= d;
            }
        } else if (a > ratio) {
            const int32_t g = (static_cast<int32_t>(static_cast<float>(dy) * (a / ratio)) - dy) / 2;
            GrowInside(&r.y0, &r.y1, g, height);
        } else {
            const int32_t g = (static_cast<int32_t>(static_cast<float>(dx) * (ratio / a)) - dx) / 2;
            GrowInside(&r.x0, &r.x1, g, width);
        }
    }
    // Written back to the level setters, whose ranges clamp them.
    r.x0 = std::clamp(r.x0, 0, std::max(width - 1, 0));
    r.x1 = std::clamp(r.x1, 0, std::max(width - 1, 0));
    r.y0 = std::clamp(r.y0, 0, std::max(height - 1, 0));
    r.y1 = std::clamp(r.y1, 0, std::max(height - 1, 0));
    return r;
}

ImageBuffer* Crop_Image(const ImageBuffer* image, const CropRect& rect) {
    if (!image) return nullptr;
    const CropRect r = Crop_Order(rect);
    if (r.x0 == r.x1 || r.y0 == r.y1) return nullptr;
    if (r.x0 < 0 || r.y0 < 0 || r.x1 >= image->width || r.y1 >= image->height) return nullptr;
    const int32_t w = r.x1 - r.x0 + 1, h = r.y1 - r.y0 + 1;
    ImageBuffer* out = Image_Create(w, h);
    out->bitDepth = image->bitDepth;
    out->maxValue = image->maxValue;
    out->mono = image->mono;
    if (image->alpha) Image_AddAlpha(out);
    if (image->aux) Image_AddAux(out);
    if (image->attachment && image->attachmentSize > 0) {
        out->attachment = static_cast<uint8_t*>(std::malloc(image->attachmentSize));
        if (out->attachment) {
            std::memcpy(out->attachment, image->attachment, image->attachmentSize);
            out->attachmentSize = image->attachmentSize;
        }
    }
    const int64_t* in[5] = {image->red, image->green, image->blue, image->alpha, image->aux};
    int64_t* to[5] = {out->red, out->green, out->blue, out->alpha, out->aux};
    for (int p = 0; p < 5; ++p) {
        if (!in[p] || !to[p]) continue;
        for (int32_t y = 0; y < h; ++y)
            std::memcpy(to[p] + int64_t{y} * out->stride, in[p] + int64_t{y + r.y0} * image->stride + r.x0,
                        size_t(w) * sizeof(int64_t));
    }
    return out;
}

ImageBuffer* Crop_Run(const ImageBuffer* image, const CropSettings& settings, const KernelControl*) {
    return Crop_Image(image, settings.rect);
}
