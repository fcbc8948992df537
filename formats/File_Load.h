// The load flow up to the questions it asks: the readers tried in their fixed
// order, the depth raised to the working 30 bits, the grey and transparency
// tests, and the stacking-artefact check. What the user is to be asked is
// returned; the desktop program asks it, the command line answers by option.
#pragma once

#include "formats/Stacking_Artefacts.h"

#include <cstdint>

struct ImageBuffer;
struct KernelControl;

enum class FileReaderKind { kNone, kBmp, kTiff, kFits, kRaw, kPng, kJpeg };
const char* File_ReaderName(FileReaderKind reader);

// The first reader, in the order BMP, TIFF, FITS, raw frame, PNG, JPEG, that
// takes the file; each decides by content. Null when none does.
ImageBuffer* File_ReadAnyFormat(const char* path, FileReaderKind* reader);

struct LoadInfo {
    FileReaderKind reader = FileReaderKind::kNone;
    int bitDepthAsRead = 0;
    bool alphaAsRead = false;      // the reader delivered an alpha plane
    bool grey = false;             // every pixel has red = green = blue
    int64_t transparentCount = 0;  // pixels whose alpha is below maxValue - 1
    bool askDataGaps = false;      // some but not all pixels are transparent: alpha kept
    bool artefacts = false;
    ArtefactBox box;
};

// Prepares a freshly read image as the working image: refuses an empty one
// (freeing it, false), raises it to 30 bits, and fills the rest of `info`.
// Nothing is logged.
bool File_PrepareLoaded(ImageBuffer* image, LoadInfo* info, const KernelControl* control = nullptr);

// Reads the file and prepares it as the working image (30 bits); logs
// "File loaded [". Null when no reader takes the file or it is empty. A caller
// that shows the wait cursor holds a CursorWaitScope around the call. With a
// control, the stages (reading, preparing, checking the borders) are reported
// as they begin; the readers themselves are not interrupted.
ImageBuffer* File_LoadImageData(const char* path, LoadInfo* info, const KernelControl* control = nullptr);
inline constexpr const char* kLoadStageReading = "Reading the file";
inline constexpr const char* kLoadStagePreparing = "Preparing the image";
inline constexpr const char* kLoadStageBorders = "Checking for stacking artifacts";

// The closing line of a load, after the questions: "Image size is %d x %d\n".
void File_LogImageSize(const ImageBuffer* image);

enum class DatasetAnswer { kLinear, kLinearOsc, kNonLinearSrgb };
// Logs the answer to "Type of dataset?" with the line for a grey or colour image.
void File_LogDatasetAnswer(DatasetAnswer answer, bool grey);
const char* File_DatasetLogLine(DatasetAnswer answer, bool grey);

// Logs the answer and acts on it: data from a one-shot-colour camera that was
// not white balanced is balanced (image/Image_Balance.h) and the balance
// logged. The other answers leave the samples as they are.
void File_ApplyDatasetAnswer(ImageBuffer* image, DatasetAnswer answer, bool grey);
inline constexpr const char* kOscBalanceLogFormat =
    "Colour balanced for OSC data: background R %lld G %lld B %lld, gain R %.4f G %.4f B %.4f\n";

inline constexpr const char* kLoadFailedTitle = "Failed";
inline constexpr const char* kLoadFailedText =
    "Could not read file. Make sure image file is a FITS file, an uncompressed, IBM PC byte-order TIFF file "
    "or a "
    "PNG file.";
