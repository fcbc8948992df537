// One processing step of a batch run, from its command line option to its
// effect on the working image and mask. The command line runs the load flow,
// then the steps in the order given, then the save flow; values are the
// modules' own slider positions so that a processing log can be replayed.
//   --autodev[=LIST]   LIST: blur=V, curve=V, tone=V, outside=V, roi=X0:Y0:X1:Y1
//   --bin=V            scale in steps of 0.0001 (0..10000)
//   --rotate=V         tenths of a degree (0..3599)
//   --crop=X0:Y0:X1:Y1
//   --flip=h | --flip=v
#pragma once

#include "host/KernelControl.h"
#include "modules/autodev/AutoDev_Params.h"
#include "modules/bin/Bin_Params.h"
#include "modules/crop/Crop_Params.h"
#include "modules/rotate/Rotate_Params.h"

#include <string>

struct ImageBuffer;

enum class PipelineStepKind : uint8_t { AutoDev, Bin, Rotate, Crop, FlipHorizontal, FlipVertical };

struct PipelineStep {
    PipelineStepKind kind = PipelineStepKind::AutoDev;
    AutoDevParams autodev;
    BinParams bin;
    RotateParams rotate;
    CropRect crop;
};

// True when `option` is one of the step options above and its values are in
// range; otherwise false with a one-line reason in `error` (may be null).
bool Pipeline_IsStepOption(const std::string& option);
bool Pipeline_ParseStep(const std::string& option, PipelineStep* step, std::string* error = nullptr);

// Runs the step on *image (and *mask when there is one), replacing them when
// the size changes. `logBlock` receives the step's parameter block for the
// processing log (empty for the mirrors, which are not module steps, and for a
// step that left the image as it was). Returns false only when cancelled; the
// image and mask are then unchanged.
bool Pipeline_RunStep(const PipelineStep& step, ImageBuffer** image, ImageBuffer** mask,
                      const KernelControl* control, std::string* logBlock);
