// Detects the ragged borders that stacking leaves where frames did not overlap
// (rows and columns of zeros or of dim, partial data) and returns the box
// inside them.
#pragma once

#include <cstdint>

struct ImageBuffer;

// Left and top are the first kept column and row; right and bottom are the
// ends (exclusive). A clean image gives 0, 0, width, height.
struct ArtefactBox {
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;
};

// True when a border was found on any side; the box is written either way.
bool File_DetectStackingArtefacts(const ImageBuffer* image, ArtefactBox* box);

inline constexpr const char* kArtefactsTitle = "Possible stacking artifacts detected";
inline constexpr const char* kArtefactsText =
    "This image may contain stacking artifacts. If this is the case, please use the Crop module to crop "
    "these "
    "stacking artifacts out. The presence of stacking artifacts may severely hamper Pellucida' ability to "
    "attain "
    "optimal results.";
