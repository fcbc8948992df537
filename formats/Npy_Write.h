// Writes the working image losslessly as a NumPy array for scientific users
// and exact checks: little-endian int64, shape (3, height, width), samples as
// they are (30 bits for the working image).
#pragma once

struct ImageBuffer;

// 1 on success, 0 on failure; a failed write leaves any file at `path` untouched.
int Npy_Write(const ImageBuffer* image, const char* path);
