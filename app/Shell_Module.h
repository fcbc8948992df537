// The module framework: a module's form over the main view, its setters made
// from its parameter rows, its computation on the background task with the
// newest values always computed next, the preview, before/after, zoom, reset,
// info texts, and leaving with Keep or Cancel. The framework knows modules
// only through their rows in the module list.
#pragma once

#include "app/Shell.h"
#include "modules/Module.h"

#include <atomic>

struct ShellModule {
    const ModuleDef* def = nullptr;
    Widget* form = nullptr;
    Widget* view = nullptr;
    ModuleScreen screen{};
    ModuleParamsBuffer params;  // the positions the setters show
    ImagePtr source;            // what the step starts from instead of the working image, or null
    void (*answered)(ModuleScreen* screen, int button) = nullptr;  // the module's question up
    Widget* keepProgress = nullptr;   // Keep waits for the exact result under this dialog
    const ModuleDef* next = nullptr;  // entered with `nextParams` once the result is kept
    ModuleParamsBuffer nextParams;

    // The latest finished result, the positions it was computed with, and
    // what the view shows of it (a copy the module marked up, or null).
    ImagePtr result, resultMask, shown;
    ModuleParamsBuffer resultParams;
    bool showingBefore = false;
    // What a module that computes nothing until Keep shows instead of the
    // image (a picture for the eye only), or null.
    ImagePtr display;

    // A large image is first computed on a copy binned to about the view's
    // size, so that a change shows at once; the exact result follows.
    ImagePtr small;  // null when the image is small enough to compute whole
    int32_t smallFactor = 1;
    ImagePtr smallResult;
    ModuleParamsBuffer smallParams;
    bool runSmall = false;                      // the running computation works on the small copy
    bool shownSmall = false;                    // the view shows the small copy's result
    int32_t shownWidth = -1, shownHeight = -1;  // the size of what the view shows

    // The computation on the background task. `restart` asks for the newest
    // positions once the running one has stopped; its result is dropped.
    bool running = false;
    bool restart = false;
    bool closing = false;  // leaving: the running computation is cancelled and nothing new starts
    std::atomic<bool> cancel{false};
    std::atomic<int> percent{0};
    ModuleParamsBuffer runParams;  // the setters' positions the run was started for
    ModuleParamsBuffer runArgs;    // what it runs with (scaled for the small copy)
    // What the run reads without changing it (the working image, the tracked
    // reference or the small copy; each stays put until the run is taken), or
    // null when it works in place on runImage, a copy (with the mask).
    const ImageBuffer* runSource = nullptr;
    ImageBuffer* runImage = nullptr;  // the task's; taken once it ended
    ImageBuffer* runMask = nullptr;
    ModuleRunStatus runStatus = ModuleRunStatus::kCancelled;
};

// Enters the module a main-form button names (its form in the archive).
void Shell_EnterModule(Shell* shell, const ModuleDef& module);
// Enters as Shell_EnterModule does, then, after the module's enter hook, sets
// the positions to `params`, shows them on the setters and tells the screen
// (its changed hook with widget 0: every position was set from outside).
void Shell_EnterModuleWithParams(Shell* shell, const ModuleDef& module, const ModuleParamsBuffer& params);
// On every tick while a module is entered: progress, and the finished result.
void Shell_PollModule(Shell* shell);
// The computation for the positions the setters show: started now, or, while
// one runs, once it has stopped.
void Shell_StartModuleRun(Shell* shell);
// Stops the running computation and waits for it: its result is dropped and
// the newest positions are computed again on the next tick.
void Shell_StopModuleRun(Shell* shell);
// Computes the setters' positions at once (Keep on a result that is not the newest).
ModuleRunStatus Shell_RunModuleNow(Shell* shell);
// The view shows the result (as the module marks it up) or the image before;
// a module that computes nothing until Keep shows the image marked up.
void Shell_ShowModuleImage(Shell* shell);
// The module's display picture of the image (or its quick copy), if it makes one.
void Shell_MakeModuleDisplay(Shell* shell);
// Box-averages `image` by `factor` in both directions (the edge's partial
// blocks average what they hold), for the quick preview.
ImagePtr Shell_BinForPreview(const ImageBuffer& image, int32_t factor);
// The binned copy for a view of this size: null when the image is at most
// twice the view's size.
void Shell_PrepareSmallPreview(ShellModule* module, const ImageBuffer& image, int32_t viewWidth,
                               int32_t viewHeight);
// The positions for the small copy: image coordinates divided by its factor.
ModuleParamsBuffer Shell_SmallParams(const ShellModule& module);
// "BtKp": leaves with the exact result for the setters' positions; while it
// is still computed, under a progress dialog whose Cancel goes back.
void Shell_KeepModule(Shell* shell);
// Keep (the result becomes the working image) or Cancel.
void Shell_LeaveModule(Shell* shell, bool keep);
// The "Parameter [" block of a module form, from its widgets.
void Shell_LogParameters(Shell* shell, Widget* form);
// The same block as text.
std::string Shell_ParameterBlock(Widget* form);
// Binds the info buttons "BtI0", "BtI1", ... of a form to their texts.
void Shell_BindInfoButtons(Shell* shell, Widget* form);
// The stereo form's export buttons ("BtEH", "BtEV", "BtEF"): the save dialog
// and the export. False for any other button.
bool Shell_ExportButton(Shell* shell, uint32_t buttonId);

inline constexpr const char* kModuleBeforeCaption = "Before";
inline constexpr const char* kModuleAfterCaption = "After";
