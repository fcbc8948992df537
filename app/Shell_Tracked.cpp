// The tracked reference: with tracking on, the linear data from before the
// first global stretch stays in the tracking store (sample for sample, so a
// stretch redone from it equals the same steps run in a batch), and every geometry step kept after it is
// applied to it as well, so that a later global stretch can start again from linear data in the image's
// present geometry. The reference of the undo step waits in a second slot and trades places with it on Undo,
// as the image does.
#include "app/Shell.h"

#include "host/CursorWaitScope.h"
#include "host/Host_Path.h"
#include "image/Tracking.h"

#include <filesystem>
#include <utility>

namespace {

constexpr int kReferenceSlot = 2;
constexpr int kReference = 0;
constexpr int kUndoReference = 1;

namespace fs = std::filesystem;

// The present reference becomes the undo step's, the data's flags with it.
void KeepForUndo(Shell* shell) {
    std::error_code ec;
    const fs::path now = Host_Path(Tracking_SlotPath(kReferenceSlot, kReference));
    const fs::path undo = Host_Path(Tracking_SlotPath(kReferenceSlot, kUndoReference));
    if (shell->trackedReference)
        fs::copy_file(now, undo, fs::copy_options::overwrite_existing, ec);
    else
        fs::remove(undo, ec);
    shell->undo.reference = shell->trackedReference && !ec;
    shell->undo.linear = shell->outcome.linear;
    shell->undo.stretchKept = shell->globalStretchKept;
}

}  // namespace

void Shell_CommitStep(Shell* shell, const ModuleDef& module, const void* params, ImagePtr result,
                      ImagePtr resultMask) {
    {
        CursorWaitScope wait;
        KeepForUndo(shell);
        if (module.globalStretch) {
            // The first global stretch on tracked data: what it started from is the reference.
            if (shell->outcome.tracking && !shell->trackedReference)
                shell->trackedReference =
                    Tracking_WriteSlot(kReferenceSlot, kReference, shell->image.get(), false);
        } else if (module.maskFollows && shell->trackedReference) {
            ImageBuffer* reference = Tracking_ReadSlot(kReferenceSlot, kReference, false);
            ImageBuffer* noMask = nullptr;
            shell->trackedReference =
                reference &&
                Module_Run(module, params, &reference, &noMask, nullptr) == ModuleRunStatus::kDone &&
                Tracking_WriteSlot(kReferenceSlot, kReference, reference, false);
            Image_Free(reference);
        }
    }
    // The stacking-artefact box was found in the geometry the image was loaded in.
    if (module.maskFollows) shell->artefacts = false;
    const bool stretched = module.globalStretch;
    Shell_CommitResult(shell, std::move(result), std::move(resultMask), module.name);
    if (stretched) {
        shell->outcome.linear = false;  // the main view shows it as it is from now on
        shell->globalStretchKept = true;
        shell->stretchStale = true;  // the screen stretch goes
        Shell_RefreshMain(shell);
    }
}

ImagePtr Shell_TrackedReference(Shell* shell) {
    if (!shell->trackedReference || !shell->image) return nullptr;
    CursorWaitScope wait;
    ImagePtr reference(Tracking_ReadSlot(kReferenceSlot, kReference, false));
    if (!reference || reference->width != shell->image->width || reference->height != shell->image->height)
        return nullptr;  // a restored state of another size: the reference is not its own
    return reference;
}

// After Undo swapped the images: the flags and the references trade places too.
void Shell_TrackedUndo(Shell* shell) {
    std::error_code ec;
    const fs::path now = Host_Path(Tracking_SlotPath(kReferenceSlot, kReference));
    const fs::path undo = Host_Path(Tracking_SlotPath(kReferenceSlot, kUndoReference));
    const fs::path swap = fs::path(now) += ".swap";
    if (fs::exists(now, ec)) fs::rename(now, swap, ec);
    if (fs::exists(undo, ec)) fs::rename(undo, now, ec);
    if (fs::exists(swap, ec)) fs::rename(swap, undo, ec);
    std::swap(shell->trackedReference, shell->undo.reference);
    std::swap(shell->outcome.linear, shell->undo.linear);
    std::swap(shell->globalStretchKept, shell->undo.stretchKept);
}
