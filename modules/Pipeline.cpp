// Parsing and running of the batch processing steps.
#include "modules/Pipeline.h"

#include "image/Image.h"
#include "modules/autodev/AutoDev_Kernel.h"
#include "modules/bin/Bin_Kernel.h"
#include "modules/crop/Crop_Kernel.h"
#include "modules/rotate/Rotate_Kernel.h"

#include <charconv>
#include <string_view>
#include <vector>

namespace {

constexpr std::string_view kOptionAutoDev = "--autodev";
constexpr std::string_view kOptionBin = "--bin=";
constexpr std::string_view kOptionRotate = "--rotate=";
constexpr std::string_view kOptionCrop = "--crop=";
constexpr std::string_view kOptionFlip = "--flip=";

constexpr const char* kErrorUnknownStep = "unknown processing step: ";
constexpr const char* kErrorValue = "invalid value in ";
constexpr const char* kErrorRange = "value out of range in ";
constexpr const char* kErrorAutoDevKey = "unknown --autodev setting: ";
constexpr const char* kErrorFlip = "--flip takes h or v";

bool Fail(std::string* error, const char* reason, std::string_view what) {
    if (error) {
        *error = reason;
        error->append(what);
    }
    return false;
}

bool ParseInt(std::string_view text, int32_t* value) {
    if (text.empty()) return false;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), *value);
    return ec == std::errc() && end == text.data() + text.size();
}

// An integer within the parameter's fixed range.
bool ParseParam(std::string_view text, const ModuleParam& param, int32_t* value, std::string_view option,
                std::string* error) {
    if (!ParseInt(text, value)) return Fail(error, kErrorValue, option);
    if (*value < param.minimum || *value > param.maximum) return Fail(error, kErrorRange, option);
    return true;
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    size_t start = 0;
    for (;;) {
        const size_t at = text.find(separator, start);
        parts.push_back(
            text.substr(start, at == std::string_view::npos ? std::string_view::npos : at - start));
        if (at == std::string_view::npos) return parts;
        start = at + 1;
    }
}

// X0:Y0:X1:Y1, each a non-negative integer.
bool ParseCorners(std::string_view text, int32_t corners[4], std::string_view option, std::string* error) {
    const std::vector<std::string_view> parts = Split(text, ':');
    if (parts.size() != 4) return Fail(error, kErrorValue, option);
    for (int i = 0; i < 4; ++i)
        if (!ParseInt(parts[size_t(i)], &corners[i]) || corners[i] < 0)
            return Fail(error, kErrorValue, option);
    return true;
}

bool ParseAutoDev(std::string_view list, AutoDevParams* p, std::string_view option, std::string* error) {
    const std::span<const ModuleParam> table = AutoDev_ParamTable();
    for (std::string_view item : Split(list, ',')) {
        const size_t eq = item.find('=');
        if (eq == std::string_view::npos) return Fail(error, kErrorAutoDevKey, item);
        const std::string_view key = item.substr(0, eq), value = item.substr(eq + 1);
        if (key == "roi") {
            int32_t c[4];
            if (!ParseCorners(value, c, option, error)) return false;
            p->roiX0 = c[0];
            p->roiY0 = c[1];
            p->roiX1 = c[2];
            p->roiY1 = c[3];
            continue;
        }
        int32_t* field = key == table[0].name   ? &p->blur
                         : key == table[1].name ? &p->outside
                         : key == table[6].name ? &p->curve
                         : key == table[7].name ? &p->tone
                                                : nullptr;
        if (!field) return Fail(error, kErrorAutoDevKey, key);
        const ModuleParam& param = field == &p->blur      ? table[0]
                                   : field == &p->outside ? table[1]
                                   : field == &p->curve   ? table[6]
                                                          : table[7];
        if (!ParseParam(value, param, field, option, error)) return false;
    }
    return true;
}

void Replace(ImageBuffer** slot, ImageBuffer* image) {
    Image_Free(*slot);
    *slot = image;
}

}  // namespace

bool Pipeline_IsStepOption(const std::string& option) {
    const std::string_view o = option;
    return o == kOptionAutoDev || o.starts_with(std::string(kOptionAutoDev) + "=") ||
           o.starts_with(kOptionBin) || o.starts_with(kOptionRotate) || o.starts_with(kOptionCrop) ||
           o.starts_with(kOptionFlip);
}

bool Pipeline_ParseStep(const std::string& option, PipelineStep* step, std::string* error) {
    const std::string_view o = option;
    PipelineStep s;
    if (o == kOptionAutoDev || o.starts_with(std::string(kOptionAutoDev) + "=")) {
        s.kind = PipelineStepKind::AutoDev;
        if (o.size() > kOptionAutoDev.size() &&
            !ParseAutoDev(o.substr(kOptionAutoDev.size() + 1), &s.autodev, o, error))
            return false;
    } else if (o.starts_with(kOptionBin)) {
        s.kind = PipelineStepKind::Bin;
        if (!ParseParam(o.substr(kOptionBin.size()), Bin_ParamTable()[0], &s.bin.scale, o, error))
            return false;
    } else if (o.starts_with(kOptionRotate)) {
        s.kind = PipelineStepKind::Rotate;
        if (!ParseParam(o.substr(kOptionRotate.size()), Rotate_ParamTable()[0], &s.rotate.angle, o, error))
            return false;
    } else if (o.starts_with(kOptionCrop)) {
        s.kind = PipelineStepKind::Crop;
        int32_t c[4];
        if (!ParseCorners(o.substr(kOptionCrop.size()), c, o, error)) return false;
        s.crop = {c[0], c[1], c[2], c[3]};
    } else if (o.starts_with(kOptionFlip)) {
        const std::string_view v = o.substr(kOptionFlip.size());
        if (v == "h")
            s.kind = PipelineStepKind::FlipHorizontal;
        else if (v == "v")
            s.kind = PipelineStepKind::FlipVertical;
        else
            return Fail(error, kErrorFlip, "");
    } else {
        return Fail(error, kErrorUnknownStep, o);
    }
    *step = s;
    return true;
}

bool Pipeline_RunStep(const PipelineStep& step, ImageBuffer** image, ImageBuffer** mask,
                      const KernelControl* control, std::string* logBlock) {
    if (logBlock) logBlock->clear();
    if (!image || !*image) return false;
    ImageBuffer* img = *image;
    const int32_t width = img->width, height = img->height;
    std::string log;
    switch (step.kind) {
        case PipelineStepKind::AutoDev: {
            const bool mono = AutoDev_IsMonochrome(img);
            if (!AutoDev_RunInto(img, img, step.autodev, mono, control)) return false;
            log = AutoDev_LogBlock(step.autodev, width, height);
            break;
        }
        case PipelineStepKind::Bin: {
            const double s = Bin_Scale(step.bin);
            ImagePtr binned(BinImage(img, s, control));
            if (!binned) {
                if (KernelControl_Cancelled(control)) return false;
                break;  // no result: the image stays as it was
            }
            ImagePtr binnedMask;
            if (mask && *mask) {
                binnedMask.reset(BinImage(*mask, s, control));
                if (!binnedMask) return false;
            }
            Replace(image, binned.release());
            if (binnedMask) Replace(mask, binnedMask.release());
            log = Bin_LogBlock(step.bin);
            break;
        }
        case PipelineStepKind::Rotate: {
            const double degrees = Rotate_Degrees(step.rotate);
            ImagePtr rotated(RotateImage(img, degrees, control));
            if (!rotated) return false;
            ImagePtr rotatedMask;
            if (mask && *mask) {
                rotatedMask.reset(RotateImage(*mask, degrees, control));
                if (!rotatedMask) return false;
            }
            Replace(image, rotated.release());
            if (rotatedMask) Replace(mask, rotatedMask.release());
            log = Rotate_LogBlock(step.rotate);
            break;
        }
        case PipelineStepKind::Crop: {
            const CropRect rect = Crop_Resolve(step.crop, width, height);
            ImagePtr cropped(Crop_Image(img, rect));
            if (!cropped) break;  // a zero-length side crops nothing
            ImagePtr croppedMask;
            if (mask && *mask) croppedMask.reset(Crop_Image(*mask, rect));
            Replace(image, cropped.release());
            if (croppedMask) Replace(mask, croppedMask.release());
            log = Crop_LogBlock(step.crop, width, height);
            break;
        }
        case PipelineStepKind::FlipHorizontal:
            Crop_FlipHorizontal(img);
            if (mask && *mask) Crop_FlipHorizontal(*mask);
            break;
        case PipelineStepKind::FlipVertical:
            Crop_FlipVertical(img);
            if (mask && *mask) Crop_FlipVertical(*mask);
            break;
    }
    if (logBlock) *logBlock = log;
    return true;
}
