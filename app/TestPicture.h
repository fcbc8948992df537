// The picture the program shows until its shell exists: colour bars over a
// grey ramp, with a marker that follows the pointer. It is a pure function of
// the position and the framebuffer size, so a test can check a screen
// grab against it.
#pragma once

#include <cstdint>

// The colour (0xRRGGBB) of pixel (x, y) of a width x height picture.
uint32_t TestPicture_Pixel(uint32_t x, uint32_t y, uint32_t width, uint32_t height);

void TestPicture_Draw(uint32_t* pixels, uint32_t pixelsPerRow, uint32_t width, uint32_t height);

// A small square marker centred on (x, y), filled when the button is down;
// clipped to the picture.
void TestPicture_DrawMarker(uint32_t* pixels, uint32_t pixelsPerRow, uint32_t width, uint32_t height,
                            uint32_t x, uint32_t y, bool buttonDown);

constexpr uint32_t kTestPictureMarkerColour = 0xFF8000;
