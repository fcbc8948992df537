// AutoDev, the automatic global stretch: a transfer curve built from where the
// local contrast of the image lies (optionally weighted towards a Region of
// Interest) turns linear data into a viewable picture. Pure computation on
// ImageBuffers; the module form and the command line run the same code.
#pragma once

#include "host/KernelControl.h"
#include "modules/autodev/AutoDev_Settings.h"

#include <cstdint>

struct ImageBuffer;

// True when no pixel has two channels 2^(bitDepth - 8) or more apart.
bool AutoDev_IsMonochrome(const ImageBuffer* image);

// The stretch of `source` (the current image, or the tracked linear reference)
// as a new image of the same size and depth; a monochrome image stays grey,
// otherwise the colour of the clamped source is given back to the stretched
// luminance. Returns null when cancelled.
ImageBuffer* AutoDev_Run(const ImageBuffer* source, const AutoDevSettings& settings,
                         const KernelControl* control);

// The same into an existing image of the source's size, which may be the source
// itself (the batch pipeline stretches in place). Returns false when cancelled
// before the result was written; the destination is then untouched.
bool AutoDev_RunInto(const ImageBuffer* source, ImageBuffer* destination, const AutoDevSettings& settings,
                     const KernelControl* control);

// Display-only shading of a preview: pixels outside the RoI are lightened,
// v := (3 * v + max) / 4.
void AutoDev_ShadeOutsideRoi(ImageBuffer* preview, const AutoDevSettings& settings);
