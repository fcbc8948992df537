// Allocation, release, copying, clearing and bit-depth change of the one image
// record. Planes come from the plane store (image/Image_Planes.h), which keeps
// large freed planes for reuse; a plane from anywhere else must be a malloc
// block, as the attachment is: whoever hands one to an ImageBuffer allocates it
// with malloc and Image_Free releases it.
#include "image/Image.h"

#include "host/Host_OutOfMemory.h"
#include "image/Image_Planes.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace {

// Elements of one plane; a degenerate size still gets one element so that a
// plane pointer is never null for a created image.
size_t PlaneElements(const ImageBuffer* image) {
    if (image->stride <= 0 || image->height <= 0) return 1;
    return static_cast<size_t>(image->stride) * static_cast<size_t>(image->height);
}

int64_t* AllocatePlane(size_t elements, bool zeroed) {
    return ImagePlanes_Allocate(elements, zeroed);
}

void FillPlane(int64_t* plane, size_t elements, int64_t value) {
    for (size_t i = 0; i < elements; ++i) plane[i] = value;
}

ImageBuffer* NewRecord(int32_t width, int32_t height) {
    auto* image = new (std::nothrow) ImageBuffer{};
    if (!image) Host_OutOfMemory();
    image->width = width;
    image->height = height;
    image->stride = width;
    return image;
}

ImageBuffer* CreateWithPlanes(int32_t width, int32_t height, bool zeroed) {
    ImageBuffer* image = NewRecord(width, height);
    const size_t n = PlaneElements(image);
    image->red = AllocatePlane(n, zeroed);
    image->green = AllocatePlane(n, zeroed);
    image->blue = AllocatePlane(n, zeroed);
    if (!image->red || !image->green || !image->blue) Host_OutOfMemory();
    return image;
}

// Optional planes fail quietly: the caller sees a null plane.
void AddFilledPlane(ImageBuffer* image, int64_t*& plane) {
    if (plane) return;
    const size_t n = PlaneElements(image);
    plane = AllocatePlane(n, false);
    if (plane) FillPlane(plane, n, image->maxValue);
}

void ShiftPlane(int64_t* plane, size_t elements, int d) {
    if (!plane || d == 0) return;
    if (d > 0) {
        const int s = d > 63 ? 63 : d;
        const uint64_t ones = (uint64_t{1} << s) - 1;
        for (size_t i = 0; i < elements; ++i)
            plane[i] = static_cast<int64_t>((static_cast<uint64_t>(plane[i]) << s) | ones);
    } else {
        const int s = -d > 63 ? 63 : -d;
        for (size_t i = 0; i < elements; ++i) plane[i] >>= s;
    }
}

}  // namespace

ImageBuffer* Image_Create(int32_t width, int32_t height) {
    return CreateWithPlanes(width, height, false);
}

ImageBuffer* Image_CreateHeader(int32_t width, int32_t height) {
    return NewRecord(width, height);
}

ImageBuffer* Image_CreateCleared(int32_t width, int32_t height) {
    // calloc gives zeroed planes without touching pages that the OS hands out
    // zeroed already; a fresh image has no alpha to set opaque.
    return CreateWithPlanes(width, height, true);
}

void Image_Clear(ImageBuffer* image) {
    if (!image) return;
    const size_t n = PlaneElements(image);
    for (int64_t* plane : {image->red, image->green, image->blue, image->aux})
        if (plane) std::memset(plane, 0, n * sizeof(int64_t));
    if (image->alpha) FillPlane(image->alpha, n, image->maxValue);
}

void Image_AddAlpha(ImageBuffer* image) {
    if (image) AddFilledPlane(image, image->alpha);
}

void Image_FreeAlpha(ImageBuffer* image) {
    if (!image) return;
    ImagePlanes_Release(image->alpha);
    image->alpha = nullptr;
}

void Image_AddAux(ImageBuffer* image) {
    if (image) AddFilledPlane(image, image->aux);
}

void Image_FreeAux(ImageBuffer* image) {
    if (!image) return;
    ImagePlanes_Release(image->aux);
    image->aux = nullptr;
}

// The clone never carries alpha, even when the source has it; aux and the
// attachment come along.
ImageBuffer* Image_Clone(const ImageBuffer* source) {
    if (!source) return nullptr;
    ImageBuffer* clone = Image_Create(source->width, source->height);
    if (source->aux) {
        clone->aux = AllocatePlane(PlaneElements(clone), false);
        if (!clone->aux) Host_OutOfMemory();
    }
    clone->stride = source->stride;
    clone->bitDepth = source->bitDepth;
    clone->maxValue = source->maxValue;
    clone->mono = source->mono;
    if (source->attachment && source->attachmentSize > 0) {
        clone->attachment = static_cast<uint8_t*>(std::malloc(source->attachmentSize));
        if (!clone->attachment) Host_OutOfMemory();
        std::memcpy(clone->attachment, source->attachment, source->attachmentSize);
        clone->attachmentSize = source->attachmentSize;
    }
    const size_t bytes = PlaneElements(clone) * sizeof(int64_t);
    const int64_t* from[] = {source->red, source->green, source->blue, source->aux};
    int64_t* to[] = {clone->red, clone->green, clone->blue, clone->aux};
    for (int p = 0; p < 4; ++p) {
        if (!to[p]) continue;
        if (from[p])
            std::memcpy(to[p], from[p], bytes);
        else
            std::memset(to[p], 0, bytes);
    }
    return clone;
}

void Image_Free(ImageBuffer* image) {
    if (!image) return;
    ImagePlanes_Release(image->red);
    ImagePlanes_Release(image->blue);
    ImagePlanes_Release(image->green);
    ImagePlanes_Release(image->alpha);
    ImagePlanes_Release(image->aux);
    std::free(image->attachment);
    delete image;
}

// Raising the depth fills the new low bits with ones, so 0 becomes 2^d - 1 and
// the old maximum the new one. maxValue is worked out in 32-bit unsigned
// arithmetic (the shift count taken modulo 32, as the processor does), so a
// depth of 31 gives 2147483647 and 32 gives 0.
void Image_SetBitDepth(ImageBuffer* image, int newDepth) {
    if (!image) return;
    const int d = newDepth - static_cast<int>(image->bitDepth);
    const size_t n = PlaneElements(image);
    for (int64_t* plane : {image->red, image->green, image->blue, image->alpha, image->aux})
        ShiftPlane(plane, n, d);
    image->bitDepth = static_cast<uint16_t>(newDepth);
    const uint32_t max32 = (uint32_t{1} << (static_cast<uint32_t>(newDepth) & 31u)) - 1u;
    image->maxValue = static_cast<int64_t>(max32);
}
