// A module's computation and its preview. One computation runs at a time, on
// the background task, on a copy of the working image; a change while it runs
// cancels it and the newest positions run next, so a storm of changes ends
// with the last one shown. Keep runs in place when the shown result is not the
// newest one.
#include "app/Shell_Module.h"

#include "host/CursorWaitScope.h"
#include "host/Host_Threads.h"
#include "ui/ProgressDialog.h"
#include "ui/widgets/Button.h"
#include "ui/widgets/ImageView.h"
#include "ui/widgets/Label.h"

#include <cstdio>
#include <cstring>
#include <utility>

namespace {

constexpr uint32_t Id(const char* text) {
    return Widget_PackId(text);
}

void Report(void* context, const char*, int percent) {
    static_cast<ShellModule*>(context)->percent.store(percent, std::memory_order_relaxed);
}

// The module's step for the prepared run: from its source into a new image,
// or in place on the copies.
void Execute(ShellModule* m, const KernelControl* control) {
    if (m->runSource) {
        ImagePtr result;
        m->runStatus = Module_RunFrom(*m->def, m->runArgs.bytes, m->runSource, &result, control);
        m->runImage = result.release();
        return;
    }
    m->runStatus = Module_Run(*m->def, m->runArgs.bytes, &m->runImage, &m->runMask, control);
}

// The background task.
void RunTask(void* context) {
    auto* m = static_cast<ShellModule*>(context);
    const KernelControl control{&m->cancel, Report, m};
    Execute(m, &control);
}

void SetProgressText(Shell* shell, ShellModule* m, const char* text) {
    if (Widget* label = Widget_FindById(m->form, Id("LbPg"))) Label_SetText(shell->ui.get(), label, text);
}

bool SameParams(const ModuleParamsBuffer& a, const ModuleParamsBuffer& b) {
    return std::memcmp(a.bytes, b.bytes, sizeof a.bytes) == 0;
}

// The data of one run: the small copy (without the mask, which only a kept
// step needs) or the whole image, read where it is; copies only when the mask
// follows, since the pair is changed in place together.
void PrepareRun(Shell* shell, ShellModule* m, bool small) {
    m->runParams = m->params;
    m->runSmall = small;
    m->runArgs = small ? Shell_SmallParams(*m) : m->params;
    const ImageBuffer* from = small ? m->small.get() : m->source ? m->source.get() : shell->image.get();
    const bool withMask = !small && shell->mask && m->def->maskFollows;
    m->runSource = withMask ? nullptr : from;
    m->runImage = withMask ? Image_Clone(from) : nullptr;
    m->runMask = withMask ? Image_Clone(shell->mask.get()) : nullptr;
    m->cancel = false;
    m->percent = 0;
}

// The quick copy goes first while the view is fitted (zoomed in, the user
// looks at pixels the small copy does not have) and it has no result for
// these positions yet.
bool SmallFirst(const ShellModule& m) {
    const ImageViewRecord* view = m.view ? Widget_Record<ImageViewRecord>(m.view) : nullptr;
    return m.small && !m.keepProgress && view && view->fit &&
           !(m.smallResult && SameParams(m.smallParams, m.params));
}

// What the run left becomes the result when it finished with the newest
// positions; otherwise it is dropped.
void TakeRun(ShellModule* m, bool adopt) {
    if (adopt && m->runStatus == ModuleRunStatus::kDone && m->runSmall) {
        m->smallResult.reset(m->runImage);
        Image_Free(m->runMask);
        m->smallParams = m->runParams;
    } else if (adopt && m->runStatus == ModuleRunStatus::kDone) {
        m->result.reset(m->runImage);
        m->resultMask.reset(m->runMask);
        m->resultParams = m->runParams;
    } else {
        Image_Free(m->runImage);
        Image_Free(m->runMask);
        // Positions that give no result (Bin at scale 0) leave the picture
        // shown; Keep then commits nothing.
    }
    m->runImage = m->runMask = nullptr;
    m->runSource = nullptr;
}

// What the view shows of `source`: a copy the module marked up, or null (`exact`: in the
// working image's pixels, else in the quick copy's).
void Shade(Shell* shell, ShellModule* m, const ImageBuffer* source, bool exact) {
    if (!m->def->screen || !m->def->screen->shade) return;
    ModuleParamsBuffer scaled = exact ? m->params : Shell_SmallParams(*m);
    ModuleScreen screen = m->screen;
    screen.image = exact ? shell->image.get() : m->small.get();
    screen.params = scaled.bytes;
    // The zoom the view will show it at: the user's, kept for a picture of
    // the size shown last, else the fitted one.
    Toolkit* ui = shell->ui.get();
    const ImageViewRecord* record = Widget_Record<ImageViewRecord>(m->view);
    const bool keepsZoom =
        record && !record->fit && m->shownWidth == source->width && m->shownHeight == source->height;
    const PixelRect r = Widget_PixelRect(ui, m->view);
    screen.viewZoom =
        keepsZoom ? record->zoom : ImageView_FitZoomFor(ui, m->view, source->width, source->height);
    screen.viewWidth = r.width;
    screen.viewHeight = r.height;
    m->shown.reset(m->def->screen->shade(&screen, source));
}

}  // namespace

void Shell_StartModuleRun(Shell* shell) {
    ShellModule* m = shell->module.get();
    if (!m || m->closing) return;
    if (m->def->appliesOnKeep) {  // nothing to compute: only the marks change
        Shell_ShowModuleImage(shell);
        return;
    }
    if (m->running) {
        m->cancel = true;
        m->restart = true;
        return;
    }
    if (Host_IsBackgroundRunning()) return;  // not ours: nothing else runs while a module is up
    if (m->result && SameParams(m->resultParams, m->params)) return;  // shown already
    PrepareRun(shell, m, SmallFirst(*m));
    m->running = true;
    m->restart = false;
    SetProgressText(shell, m, "Computing...");
    Host_StartBackgroundTask(RunTask, m);
}

void Shell_PollModule(Shell* shell) {
    ShellModule* m = shell->module.get();
    if (!m || !m->running) return;
    if (m->keepProgress && ProgressDialog_Cancelled(m->keepProgress)) {
        ProgressDialog_Close(shell->ui.get(), std::exchange(m->keepProgress, nullptr));  // back to the module
        m->next = nullptr;
    }
    if (Host_IsBackgroundRunning()) {
        const int percent = m->percent.load(std::memory_order_relaxed);
        char text[32];
        std::snprintf(text, sizeof text, "Computing... %d%%", percent);
        SetProgressText(shell, m, text);
        if (m->keepProgress)
            ProgressDialog_SetProgress(shell->ui.get(), m->keepProgress, m->runSmall ? 0 : percent);
        return;
    }
    Host_TakeBackgroundFinished();
    m->running = false;
    const bool newest = !m->restart && SameParams(m->runParams, m->params);
    const bool small = m->runSmall;
    TakeRun(m, newest);
    SetProgressText(shell, m, "");
    if (newest) Shell_ShowModuleImage(shell);
    // A Keep that waited has its exact result now.
    if (m->keepProgress && m->result && SameParams(m->resultParams, m->params)) {
        Shell_LeaveModule(shell, true);
        return;
    }
    // After the quick preview the exact result; after a stale run the newest.
    if (!newest || (small && m->runStatus == ModuleRunStatus::kDone)) Shell_StartModuleRun(shell);
}

ModuleRunStatus Shell_RunModuleNow(Shell* shell) {
    ShellModule* m = shell->module.get();
    CursorWaitScope wait;
    PrepareRun(shell, m, false);
    Execute(m, nullptr);
    const ModuleRunStatus status = m->runStatus;
    TakeRun(m, true);
    return status;
}

void Shell_MakeModuleDisplay(Shell* shell) {
    ShellModule* m = shell->module.get();
    if (!m) return;
    m->display.reset();
    const ModuleScreenHooks* hooks = m->def->screen;
    if (!m->def->appliesOnKeep || !hooks || !hooks->display) return;
    CursorWaitScope wait;  // it may stretch the whole picture
    m->display.reset(hooks->display(&m->screen, m->small ? m->small.get() : shell->image.get()));
}

void Shell_ShowModuleImage(Shell* shell) {
    ShellModule* m = shell->module.get();
    if (!m || !m->view) return;
    Toolkit* ui = shell->ui.get();
    const bool onKeep = m->def->appliesOnKeep;
    const bool before = m->showingBefore || (!onKeep && !m->result && !m->smallResult);
    if (Widget* toggle = Widget_FindById(m->form, Id("BtOr"))) {
        Button_SetText(ui, toggle, m->showingBefore ? kModuleAfterCaption : kModuleBeforeCaption);
        Button_SetEnabled(ui, toggle, m->result || m->smallResult || onKeep);
    }
    // Keep takes the exact result, computing it if only the quick one is shown.
    if (Widget* keep = Widget_FindById(m->form, Id("BtKp")))
        Button_SetEnabled(ui, keep, m->result || m->smallResult || onKeep);
    // Linear data is shown through the main view's screen stretch; a global
    // stretch's result is already meant for the eye.
    const bool stretchShown = shell->outcome.linear && shell->screenStretch && !shell->screenLuts.empty();
    const ImageBuffer* image = shell->image.get();
    const uint8_t* lut = stretchShown ? shell->screenLuts.data() : nullptr;
    // What the view shows now stays alive until it shows the new picture (a
    // result it showed may be gone already: its size was noted when shown).
    const ImageViewRecord* record = Widget_Record<ImageViewRecord>(m->view);
    const bool fit = !record || record->fit;
    const int32_t zoom = record ? record->zoom : 100;
    const int64_t cx = record ? record->centreX : 0, cy = record ? record->centreY : 0;
    ImagePtr previous = std::move(m->shown);
    m->shownSmall = false;
    if (onKeep) {
        // The image itself (its quick copy when there is one, or the module's
        // picture of it), marked up unless the view shows it before.
        m->shownSmall = m->small != nullptr;
        const ImageBuffer* source = m->display ? m->display.get() : m->small ? m->small.get() : image;
        if (!before) Shade(shell, m, source, !m->shownSmall);
        image = m->shown ? m->shown.get() : source;
        if (m->display) lut = nullptr;
    } else if (!before) {
        // The exact result for these positions, else the quick one, else the
        // last exact one while the newest is computed.
        const bool exact = m->result && (SameParams(m->resultParams, m->params) ||
                                         !(m->smallResult && SameParams(m->smallParams, m->params)));
        m->shownSmall = !exact;
        const ImageBuffer* source = exact ? m->result.get() : m->smallResult.get();
        Shade(shell, m, source, exact);
        image = m->shown ? m->shown.get() : source;
        const ModuleScreenHooks* hooks = m->def->screen;
        const ModuleParamsBuffer& made = exact ? m->resultParams : m->smallParams;
        if (m->def->globalStretch || (hooks && hooks->shownAsIs && hooks->shownAsIs(made.bytes)))
            lut = nullptr;
    }
    const bool sameSize = m->shownWidth == image->width && m->shownHeight == image->height;
    m->shownWidth = image->width;
    m->shownHeight = image->height;
    ImageView_SetImage(ui, m->view, image, lut ? lut : shell->identityLut.data());
    if (lut) ImageView_SetTables(ui, m->view, lut, true);
    // A new preview keeps the user's zoom and place when the size is the same.
    if (sameSize && !fit) {
        ImageView_SetZoom(ui, m->view, zoom);
        if (auto* r = Widget_Record<ImageViewRecord>(m->view)) r->centreX = cx, r->centreY = cy;
    }
    Shell_RefreshZoomLabel(shell, m->view);
}
