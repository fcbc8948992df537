// Reader for baseline JPEG files through stb's decoder. Progressive and other
// non-baseline files are refused before decoding. Returns null on any failure
// and reports nothing.
#pragma once

#include <cstddef>
#include <cstdint>

struct ImageBuffer;

ImageBuffer* Jpeg_Read(const char* path);
ImageBuffer* Jpeg_ReadMemory(const uint8_t* data, size_t size);

// True when the marker segments are those of a well-formed baseline file: one
// SOF0 and otherwise only DHT, DQT, DRI, COM and APPn before the first scan,
// and no Huffman table anywhere with more than 256 codes.
bool Jpeg_IsBaseline(const uint8_t* data, size_t size);
