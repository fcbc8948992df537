// Reader for uncompressed baseline TIFF files: chunky grey, RGB and RGBA in
// either byte order, one or several strips, with the private tag 65000 carried
// into the image's attachment. Returns null on any failure and reports nothing.
#pragma once

#include <cstddef>
#include <cstdint>

struct ImageBuffer;

ImageBuffer* Tiff_Read(const char* path);
ImageBuffer* Tiff_ReadMemory(const uint8_t* data, size_t size);
