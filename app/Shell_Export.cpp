// The stereo form's export buttons: each asks for a name in the save dialog,
// then computes the depth map of the working image at full size with the
// form's settings and writes the export, which logs the module's parameter
// block with its own line (the exports are how its parameters are applied).
#include "app/Export.h"
#include "app/Shell_Module.h"

#include "host/CursorWaitScope.h"
#include "host/Host.h"
#include "modules/stereo/Stereo_Params.h"

namespace {

struct ExportButton {
    const char* id;
    const char* suffix;  // of the proposed name
    int (*run)(const char* name, const ExportSource& source);
};

constexpr ExportButton kExports[] = {
    {"BtEH", "_stereo.html", Export_StereoHtml},
    {"BtEV", "_vr.html", Export_VrHtml},
    {"BtEF", ".jpg", Export_Facebook3D},
};

// The loaded file's name without its extension, or "NewFile", with the export's own ending.
std::string ProposedName(const std::string& current, const char* suffix) {
    std::string stem = current.empty() ? "NewFile" : current;
    const size_t slash = stem.find_last_of("/\\"), dot = stem.rfind('.');
    if (dot != std::string::npos && (slash == std::string::npos || dot > slash)) stem.resize(dot);
    return stem + suffix;
}

}  // namespace

bool Shell_ExportButton(Shell* shell, uint32_t id) {
    const ExportButton* button = nullptr;
    for (const ExportButton& b : kExports)
        if (Widget_PackId(b.id) == id) button = &b;
    ShellModule* m = shell->module.get();
    if (!button || !m || m->def->params.data() != Stereo_ParamTable().data()) return false;
    const std::string proposed = ProposedName(shell->currentName, button->suffix);
    Host_Call("filedialog", "FileDialog_FileSetName", const_cast<char*>(proposed.c_str()));
    std::string name;
    if (!Shell_FileDialog("FileDialog_FileSave", &name)) return true;

    // The preview's computation shares the workers.
    Shell_StopModuleRun(shell);
    ExportSource source;
    source.image = shell->image.get();
    source.settings = Stereo_Settings(*reinterpret_cast<const StereoParams*>(m->params.bytes));
    source.ui = shell->ui.get();
    ImagePtr depth;
    {
        CursorWaitScope wait;
        depth.reset(Stereo_DepthMap(source.image, source.settings, nullptr));
    }
    source.depth = depth.get();
    source.parameters = Shell_ParameterBlock(m->form);
    button->run(name.c_str(), source);
    return true;
}
