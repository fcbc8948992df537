// Entering a module, its setters and buttons, and leaving it. The computation
// and the preview are in Shell_ModuleRun.cpp.
#include "app/Shell_Module.h"

#include "host/CursorWaitScope.h"
#include "host/Host_Threads.h"
#include "modules/Module_List.h"
#include "ui/Entities.h"
#include "ui/MessageBox.h"
#include "ui/ProgressDialog.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/WidgetKinds.h"
#include "ui/widgets/Button.h"
#include "ui/widgets/ImageView.h"
#include "ui/widgets/Label.h"
#include "ui/widgets/LevelSetter.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <utility>

namespace {

constexpr uint32_t Id(const char* text) {
    return Widget_PackId(text);
}

void WaitForBackground() {
    while (Host_IsBackgroundRunning()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

ShellModule* Current(Shell* shell) {
    return shell->module.get();
}

Widget* FindInForm(ShellModule* m, uint32_t id) {
    return m->form ? Widget_FindById(m->form, id) : nullptr;
}

// The value label of a setter: the row's text for the image's size.
std::string FormatSetter(void* user, const LevelSetterRecord&, uint32_t position) {
    const auto* row = static_cast<const ModuleParam*>(user);
    const Shell* shell = Shell_Get();
    const ImageBuffer* image = shell ? shell->image.get() : nullptr;
    return ModuleParams_ValueText(*row, int32_t(position), image ? image->width : 0,
                                  image ? image->height : 0);
}

// Every setter shows the position its row holds in `params`.
void ShowParams(Shell* shell, ShellModule* m) {
    const ImageBuffer& image = *shell->image;
    for (const ModuleParam& row : m->def->params) {
        Widget* setter = FindInForm(m, row.setterId);
        if (!setter) continue;
        LevelSetter_SetValue(
            shell->ui.get(), setter,
            uint32_t(ModuleParams_Position(row, m->params.bytes, image.width, image.height)));
    }
}

// A setter moved: its row takes the position, the screen hears of it, and the
// preview is computed again.
void OnSetter(Toolkit*, Widget* setter, void* user) {
    Shell* shell = static_cast<Shell*>(user);
    ShellModule* m = Current(shell);
    if (!m) return;
    for (const ModuleParam& row : m->def->params)
        if (row.setterId == setter->id)
            ModuleParams_Set(row, m->params.bytes, int32_t(LevelSetter_Value(setter)));
    if (m->def->screen && m->def->screen->changed) m->def->screen->changed(&m->screen, setter->id);
    Shell_StartModuleRun(shell);
}

void SetupSetters(Shell* shell, ShellModule* m) {
    const ImageBuffer& image = *shell->image;
    for (const ModuleParam& row : m->def->params) {
        Widget* setter = FindInForm(m, row.setterId);
        if (!setter) continue;
        const int32_t maximum = ModuleParams_Maximum(row, image.width, image.height);
        const int32_t position = ModuleParams_Position(row, m->params.bytes, image.width, image.height);
        LevelSetter_SetCaption(shell->ui.get(), setter, row.caption);
        LevelSetter_Setup(shell->ui.get(), setter, uint32_t(std::max(maximum, 0)),
                          uint32_t(std::max(position, 0)), FormatSetter, const_cast<ModuleParam*>(&row));
        if (auto* record = Widget_Record<LevelSetterRecord>(setter)) {
            record->onChange = OnSetter;
            record->user = shell;
        }
    }
}

// The operations a module's screen acts through.
Shell* ShellOf(ModuleScreen* screen) {
    return static_cast<Shell*>(screen->application);
}
// A text that is an entity reference shows the entity's text (a language
// text the form defines).
void ScreenSetText(ModuleScreen* screen, uint32_t id, const char* text) {
    Shell* shell = ShellOf(screen);
    Widget* w = FindInForm(Current(shell), id);
    if (!w) return;
    const char* entity = Toolkit_LookupEntity(shell->ui.get(), text);
    const std::string shown = entity ? entity : text;
    if (w->type == kWidgetButton)
        Button_SetText(shell->ui.get(), w, shown);
    else
        Label_SetText(shell->ui.get(), w, shown);
}
void ScreenSetEnabled(ModuleScreen* screen, uint32_t id, bool enabled) {
    Shell* shell = ShellOf(screen);
    Widget* w = FindInForm(Current(shell), id);
    if (!w) return;
    if (w->type == kWidgetButton)
        Button_SetEnabled(shell->ui.get(), w, enabled);
    else if (w->type == kWidgetLevelSetter)
        LevelSetter_SetEnabled(shell->ui.get(), w, enabled);
}
void ScreenParamsChanged(ModuleScreen* screen) {
    Shell* shell = ShellOf(screen);
    ShowParams(shell, Current(shell));
    Shell_StartModuleRun(shell);
}
void ScreenMessage(ModuleScreen* screen, const char* title, const char* text) {
    MessageBox_Show(ShellOf(screen)->ui.get(), title, text, kMessageBoxInformation, nullptr, nullptr, 1,
                    "OK");
}
// The answer goes to the module that asked, if it is still up.
void OnAsked(Toolkit*, uint32_t button, void* user) {
    ShellModule* m = Current(static_cast<Shell*>(user));
    if (!m || !m->answered) return;
    std::exchange(m->answered, nullptr)(&m->screen, int(button));
}
void ScreenAsk(ModuleScreen* screen, const char* title, const char* text, const char* first,
               const char* second, void (*answered)(ModuleScreen*, int)) {
    Shell* shell = ShellOf(screen);
    Current(shell)->answered = answered;
    MessageBox_Show(shell->ui.get(), title, text, kMessageBoxInformation, OnAsked, shell, 2, first, second);
}
// The step starts again from the tracked reference; a running computation
// (of the working image) is dropped.
bool ScreenUseTrackedReference(ModuleScreen* screen) {
    Shell* shell = ShellOf(screen);
    ShellModule* m = Current(shell);
    ImagePtr reference = Shell_TrackedReference(shell);
    if (!m || !reference) return false;
    // A running computation reads the source and the small copy replaced here.
    Shell_StopModuleRun(shell);
    m->source = std::move(reference);
    m->result.reset();
    m->smallResult.reset();
    if (m->view) {
        const PixelRect r = Widget_PixelRect(shell->ui.get(), m->view);
        Shell_PrepareSmallPreview(m, *m->source, r.width, r.height);
    }
    Shell_ShowModuleImage(shell);  // the results it showed are gone
    Shell_StartModuleRun(shell);
    return true;
}
void ScreenRefreshPreview(ModuleScreen* screen, bool remakeDisplay) {
    Shell* shell = ShellOf(screen);
    if (remakeDisplay) Shell_MakeModuleDisplay(shell);
    Shell_ShowModuleImage(shell);
}
// The box is offered once: a module that takes it has used it up.
bool ScreenTakeArtefactBox(ModuleScreen* screen, ModuleRegion* box) {
    Shell* shell = ShellOf(screen);
    const ArtefactBox& b = shell->artefactBox;
    const ImageBuffer& image = *shell->image;
    if (!std::exchange(shell->artefacts, false) || b.left < 0 || b.top < 0 || b.right > image.width ||
        b.bottom > image.height || b.right <= b.left || b.bottom <= b.top)
        return false;
    *box = {b.left, b.top, b.right - b.left, b.bottom - b.top};
    return true;
}
void ScreenKeepAndEnter(ModuleScreen* screen, const ModuleDef& next, const ModuleParamsBuffer& params) {
    Shell* shell = ShellOf(screen);
    ShellModule* m = Current(shell);
    m->next = &next;
    m->nextParams = params;
    Shell_KeepModule(shell);
}
constexpr ModuleScreenOps kScreenOps = {
    ScreenSetText,     ScreenSetEnabled,          ScreenParamsChanged,  ScreenMessage,
    ScreenAsk,         ScreenUseTrackedReference, ScreenRefreshPreview, ScreenTakeArtefactBox,
    ScreenKeepAndEnter};

// The region in the working image's pixels, whichever copy the view shows.
void OnRegion(Toolkit*, Widget*, const ImageRegion& region, void* user) {
    ShellModule* m = Current(static_cast<Shell*>(user));
    if (!m || !m->def->screen || !m->def->screen->region) return;
    const int32_t k = m->shownSmall ? m->smallFactor : 1;
    const ImageBuffer& image = *static_cast<Shell*>(user)->image;
    const int32_t x = region.x * k, y = region.y * k;
    m->def->screen->region(&m->screen, {x, y, std::min(region.width * k, image.width - x),
                                        std::min(region.height * k, image.height - y)});
}

void OnButton(Toolkit*, Widget* button, void* user) {
    Shell* shell = static_cast<Shell*>(user);
    const std::shared_ptr<ShellModule> held = shell->module;  // a screen's button may leave the module
    ShellModule* m = held.get();
    if (!m) return;
    const uint32_t id = button->id;
    if (id == Id("BtKp")) {
        Shell_KeepModule(shell);
    } else if (id == Id("BtCl")) {
        Shell_LeaveModule(shell, false);
    } else if (id == Id("BtOr")) {
        m->showingBefore = !m->showingBefore;
        Shell_ShowModuleImage(shell);
    } else if (id == Id("BtZ-") || id == Id("BtZ+")) {
        if (id == Id("BtZ+"))
            ImageView_ZoomIn(shell->ui.get(), m->view);
        else
            ImageView_ZoomOut(shell->ui.get(), m->view);
        if (m->def->screen && m->def->screen->shadeFollowsZoom) Shell_ShowModuleImage(shell);
        Shell_RefreshZoomLabel(shell, m->view);
    } else if (id == Id("BtRs")) {
        m->def->initParams(m->params.bytes);
        ShowParams(shell, m);
        if (m->def->screen && m->def->screen->changed) m->def->screen->changed(&m->screen, id);
        Shell_StartModuleRun(shell);
    } else if (!Shell_ExportButton(shell, id)) {
        for (const ParamPreset& preset : m->def->presets) {
            if (preset.buttonId != id) continue;
            for (const ModuleParam& row : m->def->params)
                if (row.setterId == preset.setterId) ModuleParams_Set(row, m->params.bytes, preset.position);
            ShowParams(shell, m);
            if (m->def->screen && m->def->screen->changed) m->def->screen->changed(&m->screen, id);
            Shell_StartModuleRun(shell);
            return;
        }
        if (m->def->screen && m->def->screen->button) m->def->screen->button(&m->screen, id);
    }
}

// Every button of the form goes to one handler, except the info buttons.
void BindButtons(Shell* shell, Widget* widget) {
    if (widget->type == kWidgetButton && (widget->id >> 8) != (Id("BtI0") >> 8))
        Button_SetCallback(widget, OnButton, shell);
    for (auto& child : widget->children) BindButtons(shell, child.get());
}

// The module's form and screen, with `params` over the defaults when given.
void Enter(Shell* shell, const ModuleDef& module, const ModuleParamsBuffer* params) {
    if (!shell->image || shell->module || !module.form) return;
    // A form is loaded on first entry and waits on the shelf afterwards.
    Widget* form = nullptr;
    if (auto it = shell->moduleForms.find(&module); it != shell->moduleForms.end())
        form = Widget_FindById(&shell->shelf, it->second);
    if (!form) form = Shell_LoadForm(shell, module.form);
    if (!form) return;
    shell->moduleForms[&module] = form->id;

    auto m = std::make_shared<ShellModule>();
    m->def = &module;
    m->form = form;
    m->view = Widget_FindById(form, Id("View"));
    module.initParams(m->params.bytes);
    ModuleParamsBuffer& state = shell->moduleState[&module];
    m->screen = {&kScreenOps,
                 shell,
                 shell->image.get(),
                 m->params.bytes,
                 state.bytes,
                 shell->outcome.linear,
                 shell->outcome.tracking,
                 shell->globalStretchKept};
    shell->module = m;

    BindButtons(shell, form);
    Shell_BindInfoButtons(shell, form);
    if (m->view && module.screen && module.screen->region)
        ImageView_SetRegionCallback(m->view, OnRegion, shell);
    Shell_ShowForm(shell, form->id);
    SetupSetters(shell, m.get());  // laid out on screen: the captions can be measured
    if (m->view) {
        const PixelRect r = Widget_PixelRect(shell->ui.get(), m->view);
        Shell_PrepareSmallPreview(m.get(), *shell->image, r.width, r.height);
    }
    if (module.screen && module.screen->enter) module.screen->enter(&m->screen);
    if (params) {
        m->params = *params;
        ShowParams(shell, m.get());
        if (module.screen && module.screen->changed) module.screen->changed(&m->screen, 0);
    }
    Shell_MakeModuleDisplay(shell);
    if (!module.appliesOnKeep) Shell_ShowModuleImage(shell);
    Shell_StartModuleRun(shell);  // shows at once what computes nothing until Keep
}

}  // namespace

void Shell_EnterModule(Shell* shell, const ModuleDef& module) {
    Enter(shell, module, nullptr);
}

void Shell_EnterModuleWithParams(Shell* shell, const ModuleDef& module, const ModuleParamsBuffer& params) {
    Enter(shell, module, &params);
}

// The progress dialog of a Keep that waits for the exact result; its Cancel
// goes back to the module.
void Shell_KeepModule(Shell* shell) {
    ShellModule* m = Current(shell);
    if (!m || m->keepProgress) return;
    const bool current =
        m->result && std::memcmp(m->resultParams.bytes, m->params.bytes, sizeof m->params.bytes) == 0;
    if (current || m->def->appliesOnKeep || !m->running) {
        Shell_LeaveModule(shell, true);  // at once, or computed in place when nothing runs
        return;
    }
    m->keepProgress = ProgressDialog_Show(shell->ui.get(), "Computing the full-resolution result");
}

void Shell_StopModuleRun(Shell* shell) {
    ShellModule* m = shell->module.get();
    if (!m || !m->running) return;
    m->restart = true;
    m->cancel = true;
    WaitForBackground();
}

void Shell_LeaveModule(Shell* shell, bool keep) {
    std::shared_ptr<ShellModule> m = shell->module;
    if (!m) return;
    // The form goes first; a running computation is cancelled and waited for
    // before the module's images go. Keep never needs it: it takes the result
    // for the newest positions, computing it below when none is there.
    if (m->keepProgress) ProgressDialog_Close(shell->ui.get(), std::exchange(m->keepProgress, nullptr));
    Shell_HideForm(shell, m->form->id);
    m->closing = true;
    m->cancel = true;
    WaitForBackground();
    if (m->running) Shell_PollModule(shell);
    if (m->view) ImageView_SetImage(shell->ui.get(), m->view, nullptr, nullptr);
    m->shown.reset();
    shell->module.reset();
    if (!keep) return;

    const bool current =
        m->result && std::memcmp(m->resultParams.bytes, m->params.bytes, sizeof m->params.bytes) == 0;
    if (!current) {
        shell->module = m;  // the module's state is what the run reads
        const ModuleRunStatus status = Shell_RunModuleNow(shell);
        shell->module.reset();
        if (status != ModuleRunStatus::kDone) return;  // no result: nothing is committed
    }
    if (m->def->logged) Shell_LogParameters(shell, m->form);
    Shell_CommitStep(shell, *m->def, m->params.bytes, std::move(m->result), std::move(m->resultMask));
    if (m->next) Shell_EnterModuleWithParams(shell, *m->next, m->nextParams);
}
