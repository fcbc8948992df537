// Writer of 8-bit RGB PNG files through lodepng.
#pragma once

struct ImageBuffer;

// 1 on success, 0 on failure; a failed write leaves any file at `path` untouched.
int Png_Write(const ImageBuffer* image, const char* path);
