// The 8-bit interleaved RGB form of an image that the PNG and JPEG writers
// encode.
#pragma once

#include <cstdint>
#include <vector>

struct ImageBuffer;

// Samples are shifted to 8 bits (left by 8 - bitDepth when positive, right
// otherwise) and clamped to 0..255. Alpha and aux are not included.
std::vector<uint8_t> Format_PackRgb8(const ImageBuffer* image);
