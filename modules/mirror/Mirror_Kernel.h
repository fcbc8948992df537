// The main form's mirrors ("BtMH", "BtMV"): every plane of the image turned
// left to right or top to bottom, in place.
#pragma once

struct ImageBuffer;

struct MirrorSettings {
    bool horizontal = true;  // left-right; otherwise top-bottom
};

void Mirror_Run(ImageBuffer* image, const MirrorSettings& settings);
