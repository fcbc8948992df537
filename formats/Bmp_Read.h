// Reader for uncompressed 24- and 32-bit Windows bitmaps. Returns null on any
// failure and reports nothing.
#pragma once

#include <cstddef>
#include <cstdint>

struct ImageBuffer;

ImageBuffer* Bmp_Read(const char* path);
ImageBuffer* Bmp_ReadMemory(const uint8_t* data, size_t size);
