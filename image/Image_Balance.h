// White balance of linear colour data from a one-shot-colour camera (a sensor
// with a Bayer matrix) that was not balanced when it was stacked: the answer
// "Linear, from OSC/DSLR with Bayer matrix and not white balanced" to the
// dataset question. Without it the green of the matrix (twice as many green
// photosites, and more sensitive ones) tints the whole stretched picture.
//
// The sky background of each channel, its median, is brought to the lowest of
// the three, and the signal above it is scaled so that the stars and the
// object, taken together, come out white; no channel is ever scaled up, so
// nothing that was below the maximum is clipped.
#pragma once

#include <cstdint>

struct ImageBuffer;

struct ColourBalance {
    int64_t background[3] = {0, 0, 0};  // median of red, green and blue
    double gain[3] = {1, 1, 1};         // applied to the signal above the background
    int64_t signalPixels = 0;           // sampled pixels clearly above the background in every channel
};

// Measures the balance on a grid of at most about a million pixels. False for
// an image without colour (every pixel grey) or without pixels.
bool Image_MeasureOscBalance(const ImageBuffer* image, ColourBalance* balance);

// Every channel c becomes (c - background[c]) x gain[c] + the lowest
// background, truncated and clamped to 0..maxValue.
void Image_ApplyBalance(ImageBuffer* image, const ColourBalance& balance);
