// Reader for PNG files through lodepng. Returns null on any failure and reports
// nothing.
#pragma once

#include <cstddef>
#include <cstdint>

struct ImageBuffer;

ImageBuffer* Png_Read(const char* path);
ImageBuffer* Png_ReadMemory(const uint8_t* data, size_t size);
