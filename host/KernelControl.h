// How a caller watches and stops a processing kernel. The module forms run a
// kernel as the background task and set the cancel flag when the user moves a
// slider; the command line prints the progress and sets the flag on Ctrl-C.
// Kernels test the flag between stages and once per row, and a cancelled
// kernel frees its partial result and returns nothing.
#pragma once

#include <atomic>
#include <cstdint>

// Stage name and percentage (0..100) of the work done so far.
using KernelProgressFn = void (*)(void* context, const char* stage, int percent);

struct KernelControl {
    const std::atomic<bool>* cancel = nullptr;  // set by the caller to stop the kernel
    KernelProgressFn progress = nullptr;
    void* context = nullptr;
};

inline bool KernelControl_Cancelled(const KernelControl* control) {
    return control && control->cancel && control->cancel->load(std::memory_order_relaxed);
}

inline void KernelControl_Report(const KernelControl* control, const char* stage, int percent) {
    if (control && control->progress) control->progress(control->context, stage, percent);
}

// Between rows of a parallel kernel: true when the kernel is to stop, because
// another worker already stopped it or the caller cancelled (which then stops
// the others too). Worker 0 reports the stage's progress every 32 rows.
inline bool KernelControl_RowStop(const KernelControl* control, std::atomic<bool>* stopped, const char* stage,
                                  uint32_t worker, int32_t row, int32_t rows) {
    if (stopped->load(std::memory_order_relaxed)) return true;
    if (KernelControl_Cancelled(control)) {
        stopped->store(true);
        return true;
    }
    if (worker == 0 && (row & 31) == 0 && rows > 0)
        KernelControl_Report(control, stage, int(row * 100LL / rows));
    return false;
}
