// Writer of 8-bit baseline JPEG files through stb_image_write, quality 85.
#pragma once

struct ImageBuffer;

// 1 on success, 0 on failure; a failed write leaves any file at `path` untouched.
int Jpeg_Write(const ImageBuffer* image, const char* path);
