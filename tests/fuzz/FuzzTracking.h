// The tracking store's fuzz step, shared with the replay of its corpus in the
// image tests: the input becomes the slot file (0, 0) of the state folder and
// is read back, with the compose conversion chosen by the input's length.
// Links to other slots find nothing there, a case the reader must survive too.
#pragma once

#include "FuzzCheck.h"
#include "image/Tracking.h"

inline void Fuzz_TrackingSlot(const uint8_t* data, size_t size) {
    if (!Fuzz_WriteFile(Tracking_SlotPath(0, 0), data, size)) return;
    ImagePtr image(Tracking_ReadSlot(0, 0, size % 2 == 1));
    Fuzz_CheckImage(image.get());
}
