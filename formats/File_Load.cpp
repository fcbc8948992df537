#include "formats/File_Load.h"

#include "formats/Bmp_Read.h"
#include "formats/Fits_Read.h"
#include "formats/Jpeg_Read.h"
#include "formats/Png_Read.h"
#include "formats/Raw_Read.h"
#include "formats/Tiff_Read.h"
#include "host/KernelControl.h"
#include "host/Shell_Log.h"
#include "image/Image.h"
#include "image/Image_Balance.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr int kWorkingDepth = 30;

// The first bytes of the file, so that readers whose format cannot match are
// not asked to read a large file only to refuse it. Each test is one the
// reader itself requires, so the order and the outcome stay the same.
struct Magic {
    unsigned char bytes[8] = {};
    size_t size = 0;
    bool StartsWith(const char* text, size_t n) const {
        return size >= n && std::memcmp(bytes, text, n) == 0;
    }
};

Magic ReadMagic(const char* path) {
    Magic magic;
    if (FILE* file = std::fopen(path, "rb")) {
        magic.size = std::fread(magic.bytes, 1, sizeof magic.bytes, file);
        std::fclose(file);
    }
    return magic;
}

void InspectPixels(const ImageBuffer* image, LoadInfo* info) {
    bool grey = true;
    int64_t transparent = 0;
    const int64_t nearlyOpaque = image->maxValue - 1;
    for (int32_t y = 0; y < image->height; ++y) {
        const int64_t offset = int64_t(y) * image->stride;
        const int64_t* r = image->red + offset;
        const int64_t* g = image->green + offset;
        const int64_t* b = image->blue + offset;
        for (int32_t x = 0; grey && x < image->width; ++x)
            if (r[x] != g[x] || r[x] != b[x]) grey = false;
        if (image->alpha) {
            const int64_t* a = image->alpha + offset;
            for (int32_t x = 0; x < image->width; ++x) transparent += a[x] < nearlyOpaque;
        }
    }
    info->grey = grey;
    info->transparentCount = transparent;
}

}  // namespace

const char* File_ReaderName(FileReaderKind reader) {
    switch (reader) {
        case FileReaderKind::kBmp:
            return "BMP";
        case FileReaderKind::kTiff:
            return "TIFF";
        case FileReaderKind::kFits:
            return "FITS";
        case FileReaderKind::kRaw:
            return "RAW";
        case FileReaderKind::kPng:
            return "PNG";
        case FileReaderKind::kJpeg:
            return "JPEG";
        case FileReaderKind::kNone:
            break;
    }
    return "none";
}

ImageBuffer* File_ReadAnyFormat(const char* path, FileReaderKind* reader) {
    *reader = FileReaderKind::kNone;
    if (!path) return nullptr;
    const Magic magic = ReadMagic(path);
    ImageBuffer* image = nullptr;
    if (magic.StartsWith("BM", 2) && (image = Bmp_Read(path))) {
        *reader = FileReaderKind::kBmp;
    } else if ((magic.StartsWith("II", 2) || magic.StartsWith("MM", 2)) && (image = Tiff_Read(path))) {
        *reader = FileReaderKind::kTiff;
    } else if ((image = Fits_Read(path))) {
        *reader = FileReaderKind::kFits;
    } else if ((image = Raw_Read(path))) {
        *reader = FileReaderKind::kRaw;
    } else if (magic.StartsWith("\x89PNG", 4) && (image = Png_Read(path))) {
        *reader = FileReaderKind::kPng;
    } else if (magic.StartsWith("\xFF\xD8", 2) && (image = Jpeg_Read(path))) {
        *reader = FileReaderKind::kJpeg;
    }
    return image;
}

bool File_PrepareLoaded(ImageBuffer* image, LoadInfo* info, const KernelControl* control) {
    if (image->width == 0 || image->height == 0) {
        Image_Free(image);
        return false;
    }
    info->bitDepthAsRead = image->bitDepth;
    info->alphaAsRead = image->alpha != nullptr;
    KernelControl_Report(control, kLoadStagePreparing, 60);
    Image_SetBitDepth(image, kWorkingDepth);

    InspectPixels(image, info);
    const int64_t pixels = int64_t(image->width) * image->height;
    if (info->transparentCount > 0 && info->transparentCount < pixels) {
        info->askDataGaps = true;
    } else {
        Image_FreeAlpha(image);
    }
    KernelControl_Report(control, kLoadStageBorders, 85);
    info->artefacts = File_DetectStackingArtefacts(image, &info->box);
    KernelControl_Report(control, kLoadStageBorders, 100);
    return true;
}

ImageBuffer* File_LoadImageData(const char* path, LoadInfo* info, const KernelControl* control) {
    *info = LoadInfo{};
    KernelControl_Report(control, kLoadStageReading, 0);
    ImageBuffer* image = File_ReadAnyFormat(path, &info->reader);
    if (image && !File_PrepareLoaded(image, info, control)) image = nullptr;
    if (!image) return nullptr;
    Shell_Logf("File loaded [%s].\n", path);
    return image;
}

void File_LogImageSize(const ImageBuffer* image) {
    Shell_Logf("Image size is %d x %d\n", image->width, image->height);
}

const char* File_DatasetLogLine(DatasetAnswer answer, bool grey) {
    switch (answer) {
        case DatasetAnswer::kLinearOsc:
            if (!grey) return "Type of Data: Linear and was Bayered, but not whitebalanced\n";
            [[fallthrough]];  // grey data is never offered the OSC answer
        case DatasetAnswer::kLinear:
            return grey ? "Type of Data: Linear\n"
                        : "Type of Data: Linear, was not Bayered, or was Bayered + white balanced\n";
        case DatasetAnswer::kNonLinearSrgb:
            return grey ? "Type of Data: Modified and not linear\n"
                        : "Type of Data: Non-linear sRGB source\n";
    }
    return "";
}

void File_LogDatasetAnswer(DatasetAnswer answer, bool grey) {
    Shell_Log(File_DatasetLogLine(answer, grey));
}

void File_ApplyDatasetAnswer(ImageBuffer* image, DatasetAnswer answer, bool grey) {
    File_LogDatasetAnswer(answer, grey);
    if (answer != DatasetAnswer::kLinearOsc || grey) return;
    ColourBalance balance;
    if (!Image_MeasureOscBalance(image, &balance)) return;
    Image_ApplyBalance(image, balance);
    Shell_Logf(kOscBalanceLogFormat, static_cast<long long>(balance.background[0]),
               static_cast<long long>(balance.background[1]), static_cast<long long>(balance.background[2]),
               balance.gain[0], balance.gain[1], balance.gain[2]);
}
