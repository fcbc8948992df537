// Storage of image planes. Large planes freed by one image are kept for the
// next image of the same size instead of going back to the system: a fresh
// 6000 x 4000 plane costs its 192 MB in page faults and kernel zeroing before
// the first sample is written, and the program allocates and frees planes of
// the working image's size all the time (readers, clones for before/after,
// every module's result). The cache is bounded (an eighth of the machine's
// memory, 512 MiB to 4 GiB; PELLUCIDA_PLANE_CACHE_MB sets it, 0 turns it off)
// and shared by all threads.
#pragma once

#include <cstddef>
#include <cstdint>

// A plane of `elements` samples, zero-filled when asked; null when the memory
// cannot be had even after the cache was emptied.
int64_t* ImagePlanes_Allocate(size_t elements, bool zeroed);

// Gives a plane back (null is accepted).
void ImagePlanes_Release(int64_t* plane);

// Returns every cached plane to the system.
void ImagePlanes_Trim();

// Bytes held by the cache now, and its bound (tests; the bound otherwise comes
// from PELLUCIDA_PLANE_CACHE_MB or the default).
size_t ImagePlanes_CachedBytes();
void ImagePlanes_SetBudget(size_t bytes);
