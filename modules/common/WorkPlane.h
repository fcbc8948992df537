// Image-sized work buffers of the kernels. An allocation that fails ends the
// program with the same "Out of memory" message as the image record does:
// there is no recovery from exhausted memory for an image-sized buffer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};

template <class T>
using WorkPlane = std::unique_ptr<T[], FreeDeleter>;

// Uninitialised memory for `count` elements; pages are only made resident when
// they are first written, so a sparse table costs what it touches.
void* WorkPlane_AllocateBytes(size_t count, size_t elementSize);

template <class T>
WorkPlane<T> WorkPlane_Allocate(size_t count) {
    return WorkPlane<T>(static_cast<T*>(WorkPlane_AllocateBytes(count, sizeof(T))));
}

// Zero-filled; the system hands out zeroed pages, so nothing is touched here.
void* WorkPlane_AllocateZeroedBytes(size_t count, size_t elementSize);

template <class T>
WorkPlane<T> WorkPlane_AllocateZeroed(size_t count) {
    return WorkPlane<T>(static_cast<T*>(WorkPlane_AllocateZeroedBytes(count, sizeof(T))));
}
