// FITS reader: the primary image, or the first image extension behind a
// data-less primary header, as a 30-bit ImageBuffer. Returns null for anything
// it cannot read and reports nothing.
#pragma once

#include <cstddef>
#include <cstdint>

struct ImageBuffer;

ImageBuffer* Fits_Read(const char* path);

// The same reader over bytes in memory (the fuzzer's entry point).
ImageBuffer* Fits_ReadMemory(const uint8_t* data, size_t size);
