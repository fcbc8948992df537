// Reader for headerless raw sensor frames, recognised by their exact file size
// alone. Returns null on any failure and reports nothing.
#pragma once

#include <cstddef>
#include <cstdint>

struct ImageBuffer;

ImageBuffer* Raw_Read(const char* path);
ImageBuffer* Raw_ReadMemory(const uint8_t* data, size_t size);
