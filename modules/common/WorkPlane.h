// Image-sized work buffers of the kernels. An allocation that fails ends the
// program with the same "Out of memory" message as the image record does:
// there is no recovery from exhausted memory for an image-sized buffer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

// Work planes come from the plane store: a kernel run again on an image of the
// same size gets back the buffers of the last run instead of fresh pages, whose
// faults and kernel zeroing cost as much as a pass over them.
struct WorkPlaneDeleter {
    void operator()(void* p) const;
};

template <class T>
using WorkPlane = std::unique_ptr<T[], WorkPlaneDeleter>;

// Uninitialised memory for `count` elements, at most 8-byte aligned types.
void* WorkPlane_AllocatePlane(size_t count, size_t elementSize, bool zeroed);

template <class T>
WorkPlane<T> WorkPlane_Allocate(size_t count) {
    static_assert(alignof(T) <= alignof(int64_t));
    return WorkPlane<T>(static_cast<T*>(WorkPlane_AllocatePlane(count, sizeof(T), false)));
}

// Zero-filled.
template <class T>
WorkPlane<T> WorkPlane_AllocateZeroed(size_t count) {
    static_assert(alignof(T) <= alignof(int64_t));
    return WorkPlane<T>(static_cast<T*>(WorkPlane_AllocatePlane(count, sizeof(T), true)));
}

// A plain malloc block (freed with std::free), e.g. an image's attachment.
void* WorkPlane_AllocateBytes(size_t count, size_t elementSize);
