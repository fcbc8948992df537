// Neutral placeholders for the data gaps of an image: pixels whose alpha says
// they hold no data (alpha below maxValue - 1) take each channel's median of
// the pixels that do, so that statistics and filters are not pulled towards
// whatever values the gaps happen to hold. The alpha plane is kept, so the
// gaps can be found again later.
#pragma once

struct ImageBuffer;

// Does nothing without an alpha plane or without an opaque pixel.
void Image_FillTransparent(ImageBuffer* image);
