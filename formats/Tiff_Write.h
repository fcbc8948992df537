// Writer of the program's own TIFF layout: uncompressed, little-endian, 16 bits
// per sample, chunky RGB, one strip, with the image's attachment as private tag
// 65000. Alpha and aux planes are never written.
#pragma once

#include <cstdint>
#include <cstdio>

struct ImageBuffer;

// 1 on success; 0 when the path is null, the file cannot be created or a write
// fails. A failed write leaves any file already at `path` untouched.
int Tiff_Write(const ImageBuffer* image, const char* path);

// One 12-byte directory entry with count 1: tag, type, count, value, all
// little-endian. A SHORT value is written as a 4-byte number, which puts it in
// the first two bytes of the field as the format requires.
void Tiff_WriteTag(FILE* file, uint16_t tag, uint16_t type, uint32_t value);
