// The main form: its buttons bound through one table, the module buttons made
// from the module list, the handler that dispatches on the identifier, and
// the refresh after the working image changed (title, greyed buttons, view,
// zoom label, screen stretch).
#include "app/Shell.h"
#include "app/Shell_Module.h"

#include "modules/Module.h"
#include "modules/Module_List.h"
#include "ui/Layout.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/WidgetKinds.h"
#include "ui/markup/Markup_Form.h"
#include "ui/widgets/Button.h"
#include "ui/widgets/ImageView.h"
#include "ui/widgets/Label.h"

#include <cstdio>
#include <string>

namespace {

constexpr uint32_t Id(const char* text) {
    return Widget_PackId(text);
}

// Every button of the main form the handler serves, in the order they are
// bound. A button the form does not contain is skipped.
constexpr const char* kMainButtons[] = {
    "BtOp",
    "BtLR",
    "BtGn",
    "BSLe",
    "BtSv",
    "BtSW",
    "BtBa",
    "BtSB",
    "BSBo",
    "BSCr",
    "BtBS",
    "BtSy",
    "BtRn",
    "BSBi",
    "BStr",
    "BtSC",
    "BtSU",
    "BtAD",
    "BtUn",
    "BtSh",
    "BtFF",
    "BtCo",
    "BtZ-",
    "BtZ+",
    "BtMs",
    "BtLy",
    "BShr",
    "BtHe",
    "BtDe",
    "BtRt",
    "BtMH",
    "BtMV",
    "BtSP",
    "BtAb",
    "BtWv",
    "BtDv",
    "BtSS",
    "Bt3D",
    "BCon",
    "BTrU",
    // Ours: the screen stretch toggle.
    "BtST",
};

// Buttons that need an image to work on.
constexpr const char* kNeedImage[] = {"BtSv", "BtZ-", "BtZ+", "BtST"};

void OnButton(Toolkit*, Widget* button, void* user) {
    Shell_OnMainButton(static_cast<Shell*>(user), button->id);
}

// Whether the main form offers the module: a main-form operation runs at
// once; a module with a form needs its form in the archive.
bool Offered(Shell* shell, const ModuleDef& module) {
    return !module.form || !Resources_LoadWhole(shell->ui.get(), module.form).empty();
}

std::string EscapeMarkup(const char* text) {
    std::string out;
    for (const char* p = text; *p; ++p) {
        if (*p == '&')
            out += "&amp;";
        else if (*p == '"')
            out += "&quot;";
        else if (*p == '<')
            out += "&lt;";
        else
            out += *p;
    }
    return out;
}

// The module column as markup: one button per module offered, top down, each
// a band of the same height, the rest of the column left empty.
void AddModuleButtons(Shell* shell) {
    Widget* column = Widget_FindById(&shell->shelf, Id("MdLs"));
    if (!column) return;
    std::string markup, closing;
    for (const ModuleDef* module : Module_List()) {
        if (!Offered(shell, *module)) continue;
        char id[5];
        std::snprintf(id, sizeof id, "%c%c%c%c", char(module->buttonId >> 24), char(module->buttonId >> 16),
                      char(module->buttonId >> 8), char(module->buttonId));
        markup +=
            "<LAYOUT Quadrant=\"Center\" TopLeftY=\"0\" MinTopLeftPixelsY=\"&system-buttonSizePixelsX2;\">"
            "<LAYOUT Quadrant=\"North\" TopLeftY=\"14%\" BottomRightY=\"86%\"><BUTTON ID=\"";
        markup += id;
        markup += "\" Text=\"" + EscapeMarkup(module->name) + "\" Rounded=\"Full\"></BUTTON></LAYOUT>";
        closing += "</LAYOUT>";
    }
    markup += closing;
    if (!markup.empty())
        Form_LoadText(shell->ui.get(), "module list", reinterpret_cast<const uint8_t*>(markup.data()),
                      markup.size(), column);
}

Widget* MainView(Shell* shell) {
    Widget* form = Shell_Find(shell, Id("MFrm"));
    return form ? Widget_FindById(form, Id("View")) : nullptr;
}

void Zoom(Shell* shell, bool in) {
    Widget* view = MainView(shell);
    if (!view) return;
    if (in)
        ImageView_ZoomIn(shell->ui.get(), view);
    else
        ImageView_ZoomOut(shell->ui.get(), view);
    Shell_RefreshZoomLabel(shell, view);
}

}  // namespace

std::string Shell_ZoomText(int32_t zoom, bool fit) {
    char text[32];
    std::snprintf(text, sizeof text, fit ? "%d%% (fit)" : "%d%%", zoom);
    return text;
}

std::string Shell_TitleText(const std::string& path, const ImageBuffer* image) {
    if (!image) return kNoImageTitle;
    const size_t slash = path.find_last_of("/\\");
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    char size[48];
    std::snprintf(size, sizeof size, " (%dx%d)", image->width, image->height);
    return name + size;
}

void Shell_BindMainButtons(Shell* shell) {
    AddModuleButtons(shell);
    Widget* form = Widget_FindById(&shell->shelf, Id("MFrm"));
    if (!form) return;
    for (const char* name : kMainButtons)
        if (Widget* button = Widget_FindById(form, Id(name))) Button_SetCallback(button, OnButton, shell);
}

void Shell_OnMainButton(Shell* shell, uint32_t id) {
    if (shell->loading) return;  // a file is being read: its result comes first
    if (id == Id("BtOp")) {
        Shell_Open(shell);
    } else if (id == Id("BtSv")) {
        Shell_Save(shell);
    } else if (id == Id("BtUn")) {
        Shell_Undo(shell);
    } else if (id == Id("BtZ-") || id == Id("BtZ+")) {
        Zoom(shell, id == Id("BtZ+"));
    } else if (id == Id("BtSP")) {
        Shell_ShowSupport(shell);
    } else if (id == Id("BtAb")) {
        Shell_ShowAbout(shell);
    } else if (id == Id("BTrU")) {
        Shell_ShowRestore(shell);
    } else if (id == Id("BtST")) {
        shell->screenStretch = !shell->screenStretch;
        Shell_RefreshMain(shell);
    } else if (const ModuleDef* module = Module_FindByButton(id); module && !module->form) {
        Shell_RunMainFormModule(shell, id);
    } else if (module) {
        Shell_EnterModule(shell, *module);
    }
}

void Shell_RefreshZoomLabel(Shell* shell, Widget* view) {
    Widget* form = view;
    while (form && form->type != kWidgetForm) form = form->parent;
    Widget* label = form ? Widget_FindById(form, Id("LbZP")) : nullptr;
    if (!label) return;
    const ImageViewRecord* record = Widget_Record<ImageViewRecord>(view);
    if (!record || !record->image) {
        Label_SetText(shell->ui.get(), label, "");
        return;
    }
    Label_SetText(shell->ui.get(), label, Shell_ZoomText(ImageView_Zoom(shell->ui.get(), view), record->fit));
}

void Shell_SetImage(Shell* shell, ImagePtr image) {
    shell->image = std::move(image);
    shell->stretchStale = true;
}

void Shell_RefreshMain(Shell* shell) {
    Toolkit* ui = shell->ui.get();
    Widget* form = Shell_Find(shell, Id("MFrm"));
    if (!ui || !form) return;
    const ImageBuffer* image = shell->image.get();
    if (Widget* title = Widget_FindById(form, Id("LbTi")))
        Label_SetText(ui, title, Shell_TitleText(shell->currentName, image));
    for (const char* name : kNeedImage)
        if (Widget* button = Widget_FindById(form, Id(name))) Button_SetEnabled(ui, button, image != nullptr);
    for (const ModuleDef* module : Module_List())
        if (Widget* button = Widget_FindById(form, module->buttonId))
            Button_SetEnabled(ui, button, image != nullptr);
    if (Widget* undo = Widget_FindById(form, Id("BtUn"))) {
        Button_SetText(ui, undo, shell->undo.redo ? "Redo" : "Undo");
        Button_SetEnabled(ui, undo, shell->undo.available);
    }

    // Linear data looks black on screen: a screen stretch shows it, the data untouched.
    const bool stretch = image && shell->outcome.linear && shell->screenStretch;
    if (stretch && shell->stretchStale) {
        Shell_ComputeScreenStretch(image, &shell->screenLuts);
        shell->stretchStale = false;
    }
    if (Widget* label = Widget_FindById(form, Id("LbSS")))
        Label_SetText(ui, label, stretch ? kScreenStretchActive : "");
    if (Widget* toggle = Widget_FindById(form, Id("BtST")))
        Button_SetEnabled(ui, toggle, image && shell->outcome.linear);
    if (Widget* view = Widget_FindById(form, Id("View"))) {
        // An image of the same size (a mirror, an undo) keeps the zoom and place
        // the user chose. The view's own pointer may already be freed: the size
        // it showed is kept here.
        auto* record = Widget_Record<ImageViewRecord>(view);
        const bool sameSize =
            record && image && image->width == shell->shownWidth && image->height == shell->shownHeight;
        if (sameSize)
            record->image = image;
        else
            ImageView_SetImage(ui, view, image, nullptr);
        shell->shownWidth = image ? image->width : 0;
        shell->shownHeight = image ? image->height : 0;
        ImageView_SetTables(ui, view, stretch ? shell->screenLuts.data() : nullptr, stretch);
        Shell_RefreshZoomLabel(shell, view);
    }
    Toolkit_Invalidate(ui, form);
}
