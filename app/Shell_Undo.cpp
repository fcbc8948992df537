// The undo step: the state before the last kept change lives in the tracking
// store (the image in slot (1, 0), its mask in (1, 1)); "BtUn" swaps it with
// the working data, so a second press redoes. A step that changed the size
// (a crop, a bin) is undone whole, mask included.
#include "app/Shell.h"

#include "host/CursorWaitScope.h"
#include "host/Host_Path.h"
#include "host/Shell_Log.h"
#include "image/Tracking.h"
#include "modules/Module.h"
#include "modules/Module_List.h"
#include "ui/MessageBox.h"

#include <cstdio>
#include <filesystem>

namespace {

constexpr int kUndoSlot = 1;
constexpr int kUndoImage = 0;
constexpr int kUndoMask = 1;

constexpr const char* kUndoSizeText =
    "Dimensions of image in undo buffer differ from the dimension of the current image. The stored state "
    "may be damaged; nothing was changed.";

// Stores the working data as the undo step; false when the store refused it
// (the store has said why).
bool StoreWorking(Shell* shell) {
    if (!Tracking_WriteSlot(kUndoSlot, kUndoImage, shell->image.get(), false)) return false;
    const bool hasMask = shell->mask != nullptr;
    if (hasMask && !Tracking_WriteSlot(kUndoSlot, kUndoMask, shell->mask.get(), false)) return false;
    if (!hasMask) {
        std::error_code ec;
        std::filesystem::remove(Host_Path(Tracking_SlotPath(kUndoSlot, kUndoMask)), ec);
    }
    shell->undo.width = shell->image->width;
    shell->undo.height = shell->image->height;
    shell->undo.hadMask = hasMask;
    shell->undo.mono = shell->image->mono;  // the store keeps planes, not flags
    return true;
}

}  // namespace

void Shell_CommitResult(Shell* shell, ImagePtr result, ImagePtr resultMask, const char* caption) {
    if (!result) return;
    {
        CursorWaitScope wait;
        shell->undo.available = shell->image && StoreWorking(shell);
        shell->undo.redo = false;
    }
    Shell_SetImage(shell, std::move(result));
    if (resultMask) shell->mask = std::move(resultMask);
    Shell_HistoryRecord(shell, caption ? caption : kHistoryStepCaption);
    Shell_RefreshMain(shell);
}

void Shell_Undo(Shell* shell) {
    if (!shell->undo.available || !shell->image) return;
    ImagePtr stored, storedMask;
    {
        CursorWaitScope wait;
        stored.reset(Tracking_ReadSlot(kUndoSlot, kUndoImage, false));
        if (stored && shell->undo.hadMask) storedMask.reset(Tracking_ReadSlot(kUndoSlot, kUndoMask, false));
    }
    // A slot that does not hold what was recorded (damaged, or written by
    // someone else) must not replace the user's image.
    const bool intact =
        stored && stored->width == shell->undo.width && stored->height == shell->undo.height &&
        (!shell->undo.hadMask ||
         (storedMask && storedMask->width == stored->width && storedMask->height == stored->height));
    if (!intact) {
        MessageBox_Show(shell->ui.get(), "Failed", kUndoSizeText, kMessageBoxError, nullptr, nullptr, 1,
                        "OK");
        return;
    }
    stored->mono = shell->undo.mono;
    {
        CursorWaitScope wait;
        if (!StoreWorking(shell)) return;
    }
    Shell_SetImage(shell, std::move(stored));
    shell->mask = std::move(storedMask);
    Shell_TrackedUndo(shell);
    shell->stretchStale = true;  // the screen stretch follows the linear flag
    std::fputs(shell->undo.redo ? "Redo\n" : "Undo\n", stdout);
    std::fflush(stdout);
    shell->undo.redo = !shell->undo.redo;
    Shell_RefreshMain(shell);
}

void Shell_RunMainFormModule(Shell* shell, uint32_t buttonId) {
    const ModuleDef* module = Module_FindByButton(buttonId);
    if (!module || !shell->image) return;
    ImageBuffer* image = nullptr;
    ImageBuffer* mask = nullptr;
    ModuleRunStatus status;
    const ModuleParamsBuffer params = Module_DefaultParams(*module);
    {
        CursorWaitScope wait;
        image = Image_Clone(shell->image.get());
        mask = shell->mask ? Image_Clone(shell->mask.get()) : nullptr;
        status = Module_Run(*module, params.bytes, &image, &mask, nullptr);
    }
    if (status != ModuleRunStatus::kDone) {
        Image_Free(image);
        Image_Free(mask);
        return;
    }
    // Logged like a kept module, so that a replay of the log repeats it.
    Shell_Log(Module_LogBlock(*module, params.bytes, shell->image->width, shell->image->height).c_str());
    Shell_CommitStep(shell, *module, params.bytes, ImagePtr(image), ImagePtr(mask));
}
