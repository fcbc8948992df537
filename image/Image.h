// The one image record of the program: a small header and up to five separately
// allocated planes of signed 64-bit samples. The working image, before/after
// copies, masks, decoded resources and tracking slots are all ImageBuffers.
#pragma once

#include <cstdint>
#include <memory>

struct ImageBuffer {
    int32_t width = 0;
    int32_t height = 0;
    int32_t stride = 0;             // samples from one row to the next; equals width
    uint16_t bitDepth = 16;         // significant bits of every sample
    int64_t maxValue = 65535;       // (1 << bitDepth) - 1
    uint8_t* attachment = nullptr;  // opaque block carried with the image (TIFF tag 65000)
    uint32_t attachmentSize = 0;
    int32_t mono = 0;  // set by a reader that found a single-plane source
    int64_t* red = nullptr;
    int64_t* green = nullptr;
    int64_t* blue = nullptr;
    int64_t* alpha = nullptr;  // optional; maxValue is opaque
    int64_t* aux = nullptr;    // optional fifth plane
};

// Progress callback shared by long image operations: called with the row being
// worked on and the row count; a non-zero answer asks the operation to stop.
using ImageProgressFn = int (*)(void* context, int32_t row, int32_t rows);

ImageBuffer* Image_Create(int32_t width, int32_t height);
ImageBuffer* Image_CreateHeader(int32_t width, int32_t height);
ImageBuffer* Image_CreateCleared(int32_t width, int32_t height);
void Image_Clear(ImageBuffer* image);
void Image_AddAlpha(ImageBuffer* image);
void Image_FreeAlpha(ImageBuffer* image);
void Image_AddAux(ImageBuffer* image);
void Image_FreeAux(ImageBuffer* image);
ImageBuffer* Image_Clone(const ImageBuffer* source);
void Image_Free(ImageBuffer* image);
void Image_SetBitDepth(ImageBuffer* image, int newDepth);
ImageBuffer* Image_Resample(const ImageBuffer* source, int32_t newWidth, int32_t newHeight,
                            ImageProgressFn progress, void* context);

// Owner for code that is not bound to the C-style lifetime of the record.
struct ImageDeleter {
    void operator()(ImageBuffer* image) const { Image_Free(image); }
};
using ImagePtr = std::unique_ptr<ImageBuffer, ImageDeleter>;
