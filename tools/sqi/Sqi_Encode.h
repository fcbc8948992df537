// Encoding pictures as .sqi icons: each plane (red, green, blue in 5-6-5,
// coverage in 8 bits) becomes a quadtree over a power-of-two grid whose nodes
// hold the mean of their area and split where the area is not uniform. The
// tree follows the decoder's geometry exactly, so every display size reads
// the same stream.
#pragma once

#include <cstdint>
#include <vector>

struct SqiSource {
    uint32_t width = 0;
    uint32_t height = 0;
    std::vector<uint8_t> rgba;  // width * height * 4, straight (not premultiplied) alpha
};

// `tinted`: the red, green and blue channels are the weights of the theme's
// three tints rather than colours. Returns the file bytes.
std::vector<uint8_t> Sqi_Encode(const SqiSource& source, bool tinted);
