// The batch face of the module list: a step's command-line option parsed into
// its module and parameter struct, the step run on the working image and
// mask, and the help text, all from the modules' rows. Values are the
// modules' own slider positions, so that a processing log can be replayed.
#pragma once

#include "host/KernelControl.h"
#include "modules/Module.h"

#include <string>

struct ImageBuffer;

struct PipelineStep {
    const ModuleDef* module = nullptr;
    ModuleParamsBuffer params;  // the module's parameter struct
};

// True when `option` names a module's step, whatever its values.
bool Pipeline_IsStepOption(const std::string& option);
// Reads "--OPTION" (the defaults) or "--OPTION=VALUES": KEY=V items separated
// by commas, a group's values as GROUP=A:B:C:D, or every value in row order
// separated by colons. False with a one-line reason in `error` (may be null)
// for an unknown step, key or malformed or out-of-range value.
bool Pipeline_ParseStep(const std::string& option, PipelineStep* step, std::string* error = nullptr);

// Runs the step on *image (and *mask when the module's mask follows),
// replacing them when the module makes new ones. `logBlock` receives the
// step's parameter block for the processing log (empty for a step that is not
// logged or left the image as it was). Returns false only when cancelled; the
// image and mask are then unchanged.
bool Pipeline_RunStep(const PipelineStep& step, ImageBuffer** image, ImageBuffer** mask,
                      const KernelControl* control, std::string* logBlock);

// The step options' part of the command line's help, one entry per module.
std::string Pipeline_Help();
