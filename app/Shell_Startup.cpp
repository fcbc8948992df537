// Start-up: the toolkit and the splash on the start event, then, once the
// splash has been up long enough, the forms, the main form's buttons and the
// tracking store; and the teardown when the program ends.
#include "app/Shell.h"
#include "app/Shell_Module.h"
#include "app/Shell_Version.h"

#include "formats/Png_Read.h"
#include "host/Host.h"
#include "host/Host_Os.h"
#include "host/Host_Threads.h"
#include "image/Tracking.h"
#include "modules/Module_List.h"
#include "ui/Entities.h"
#include "ui/Layout.h"
#include "ui/Toolkit_Create.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/WidgetKinds.h"
#include "ui/markup/Markup_Form.h"
#include "ui/widgets/Applet.h"
#include "ui/widgets/ImageView.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <thread>
#include <utility>

namespace {

// The forms loaded at start-up, in order; a form the archive does not hold
// (its module is not built yet) is skipped. The other modules load their
// forms when they are entered.
constexpr const char* kStartupForms[] = {
    kMainFormEntry,
    "Pellucida_NoxLRGB_MainForm.xml",
    "Pellucida_NoxLens_MainForm.xml",
    "Pellucida_NoxExtract_MainForm.xml",
    "Pellucida_NoxExtract_TouchUp.xml",
    "Pellucida_NoxSynth_MainForm.xml",
    "Pellucida_NoxRound_MainForm.xml",
    "Pellucida_NoxSharp_MainForm.xml",
    "Pellucida_NoxSharp_Setup.xml",
    "Pellucida_NoxFrac_MainForm.xml",
    "Pellucida_NoxFrac_Setup.xml",
    "Pellucida_NoxWavelet_MainForm.xml",
    "Pellucida_NoxWavelet_Setup.xml",
    "Pellucida_NoxDenoise2_MainForm.xml",
    "Pellucida_NoxDenoise2_Setup.xml",
    "Pellucida_NoxStereo_MainForm.xml",
    "Pellucida_NoxHeal_MainForm.xml",
    "Pellucida_NoxColor_MainForm.xml",
    "Pellucida_NoxGen_MainForm.xml",
    "Pellucida_NoxCrop_MainForm.xml",
    "Pellucida_NoxLayer_MainForm.xml",
    "Pellucida_NoxShrink_MainForm.xml",
    // Ours: the history's Restore form.
    kRestoreFormEntry,
};

constexpr uint32_t kSplashFormId = Widget_PackId("Spsh");
constexpr uint32_t kMainFormId = Widget_PackId("MFrm");

void PrintBanner() {
    const std::string rule(59, '-');
    const std::time_t now = std::time(nullptr);
    std::printf("\n%s\nPellucida %s\n%s%s\n", rule.c_str(), kPellucidaVersion,
                std::asctime(std::localtime(&now)), rule.c_str());
    std::fflush(stdout);
}

void PrepareTrackingSlots() {
    for (int a : {2, 3, 4, 1, 5, 6}) {
        Tracking_ClearSlots(a);
        if (!Tracking_CreateSlot(a)) break;  // one message for a folder that refuses us is enough
    }
}

// The main form's applet takes the ticks from the splash on, so that they stop
// at a widget of the form on screen: a file being read and a module's
// computation (its form stacked over the main form) are watched on them.
void OnMainTick(Toolkit*, Widget*, uint32_t ticks, uint32_t, void* user) {
    Shell_PollLoad(static_cast<Shell*>(user), ticks);
    Shell_PollModule(static_cast<Shell*>(user));
}

void OnSplashTick(Toolkit* toolkit, Widget*, uint32_t, uint32_t elapsed, void* user) {
    Shell* shell = static_cast<Shell*>(user);
    shell->splashTicks = elapsed;
    if (elapsed <= 2 * kSplashPeriodTicks || toolkit->currentForm != toolkit->root.get()) return;
    Shell_StartMainForm(shell);
}

}  // namespace

Widget* Shell_LoadForm(Shell* shell, const char* entry) {
    const std::vector<uint8_t> markup = Resources_LoadWhole(shell->ui.get(), entry);
    if (markup.empty()) return nullptr;
    return Form_LoadText(shell->ui.get(), entry, markup.data(), markup.size(), &shell->shelf);
}

Widget* Shell_Find(Shell* shell, uint32_t id) {
    if (!shell->ui) return nullptr;
    if (Widget* w = Widget_FindById(shell->ui->root.get(), id)) return w;
    return Widget_FindById(&shell->shelf, id);
}

void Shell_ShowForm(Shell* shell, uint32_t formId) {
    Toolkit* ui = shell->ui.get();
    auto& from = shell->shelf.children;
    auto it = std::find_if(from.begin(), from.end(), [&](const auto& w) { return w->id == formId; });
    if (it == from.end()) return;
    std::unique_ptr<Widget> form = std::move(*it);
    from.erase(it);
    form->parent = ui->root.get();
    // Below any box that is up, so a question stays on top.
    auto& to = ui->root->children;
    auto firstModal = std::find_if(to.begin(), to.end(), [](const auto& w) {
        return Widget_Record<ModalFormRecord>(w.get()) != nullptr;
    });
    to.insert(firstModal, std::move(form));
    Layout_Apply(ui, ui->root.get());
    Toolkit_Invalidate(ui, ui->root.get());
}

void Shell_HideForm(Shell* shell, uint32_t formId) {
    Toolkit* ui = shell->ui.get();
    auto& from = ui->root->children;
    auto it = std::find_if(from.begin(), from.end(), [&](const auto& w) { return w->id == formId; });
    if (it == from.end()) return;
    Toolkit_ForgetSubtree(ui, it->get());
    std::unique_ptr<Widget> form = std::move(*it);
    from.erase(it);
    form->parent = &shell->shelf;
    shell->shelf.children.push_back(std::move(form));
    Toolkit_Invalidate(ui, ui->root.get());
}

void Shell_StartUi(Shell* shell) {
    shell->ui = Toolkit_Create();
    Toolkit* ui = shell->ui.get();
    shell->shelf.width = kUnitsWhole;
    shell->shelf.height = kUnitsWhole;
    shell->programDir = Host_GetProgramDir();

    Host_Call("video", "Video_SetCursorWait", nullptr);
    const std::vector<uint8_t> png = Resources_LoadWhole(ui, kSplashPicture);
    if (!png.empty()) shell->splashPicture.reset(Png_ReadMemory(png.data(), png.size()));
    shell->identityLut.resize(kImageViewLutSize);
    for (size_t i = 0; i < shell->identityLut.size(); ++i)
        shell->identityLut[i] = static_cast<uint8_t>(i >> 8);
    Shell_LoadForm(shell, kSplashEntry);
    Shell_ShowForm(shell, kSplashFormId);
    if (Widget* view = Widget_FindById(ui->root.get(), Widget_PackId("View")); view && shell->splashPicture)
        ImageView_SetImage(ui, view, shell->splashPicture.get(), shell->identityLut.data());
    if (Widget* applet = Widget_FindById(ui->root.get(), Widget_PackId("QVSp")))
        Applet_SetTick(applet, OnSplashTick, shell);
    else
        Shell_StartMainForm(shell);  // no splash in the archive: straight on
}

void Shell_StartMainForm(Shell* shell) {
    Toolkit* ui = shell->ui.get();
    if (shell->mainFormUp) return;
    if (Widget* applet = Widget_FindById(ui->root.get(), Widget_PackId("QVSp")))
        Applet_SetTick(applet, nullptr, nullptr);
    Shell_HideForm(shell, kSplashFormId);
    shell->splashPicture.reset();

    PrintBanner();
    for (const char* entry : kStartupForms) {
        const Widget* form = Shell_LoadForm(shell, entry);
        if (!form) continue;
        // A module shows the form loaded here rather than loading a second one.
        for (const ModuleDef* module : Module_List())
            if (module->form && std::strcmp(module->form, entry) == 0) shell->moduleForms[module] = form->id;
    }
    Shell_BindMainButtons(shell);
    PrepareTrackingSlots();

    Shell_ShowForm(shell, kMainFormId);
    if (Widget* applet = Shell_Find(shell, Widget_PackId("QVAp"))) Applet_SetTick(applet, OnMainTick, shell);
    shell->mainFormUp = true;
    Shell_RefreshMain(shell);
    Host_Call("video", "Video_SetCursorArrow", nullptr);
    Shell_HistoryStart(shell);
    if (!shell->openOnStart.empty()) Shell_OpenPath(shell, std::exchange(shell->openOnStart, {}));
}

void Shell_TearDownUi(Shell* shell) {
    // A read still running writes into its task: it must end first.
    while (shell->loading && Host_IsBackgroundRunning())
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    if (shell->loading) Image_Free(shell->loading->image);
    shell->loading.reset();
    if (shell->module) Shell_LeaveModule(shell, false);  // waits for its computation
    Shell_HistoryEnd(shell);                             // a clean close: no recovery question next time
    shell->pendingLoad.reset();
    shell->shelf.children.clear();
    shell->ui.reset();
    shell->mainFormUp = false;
}
