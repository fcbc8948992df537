// Reverses the sRGB transfer curve of data that came from a JPEG or MPEG
// source (a camera or a webcam), so that it is linear again and its signal
// can be tracked.
#pragma once

struct ImageBuffer;

// Every colour sample v of maximum M becomes trunc(M x lin(v / M)), where lin
// is the sRGB decoding: u / 12.92 up to 0.04045, ((u + 0.055) / 1.055)^2.4 above.
void Image_DecodeSrgb(ImageBuffer* image);
