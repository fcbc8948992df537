// Saving: the proposed name, the save dialog, the name check, the overwrite
// question for a file that exists, and the write. A failed write leaves the
// old file as it was and says so in a box as well as in the log.
#include "app/Shell.h"

#include "formats/File_Names.h"
#include "formats/File_Save.h"
#include "host/CursorWaitScope.h"
#include "host/Host.h"
#include "ui/MessageBox.h"

#include <cstdio>
#include <utility>

namespace {

constexpr const char* kOkButton = "OK";
constexpr const char* kSaveFailedTitle = "Failed";

void Write(Shell* shell, const std::string& name) {
    bool saved = false;
    {
        CursorWaitScope wait;
        saved = File_SaveImageAs(name.c_str(), shell->image.get());
    }
    shell->currentName = name;
    Shell_RefreshMain(shell);
    if (!saved) {
        const std::string text = "Could not save file [" + name +
                                 "] for write - check permissions for folder, or check whether another "
                                 "application has this file locked.";
        MessageBox_Show(shell->ui.get(), kSaveFailedTitle, text.c_str(), kMessageBoxError, nullptr, nullptr,
                        1, kOkButton);
    }
}

void OnOverwrite(Toolkit*, uint32_t button, void* user) {
    Shell* shell = static_cast<Shell*>(user);
    const std::string name = std::exchange(shell->pendingSave, {});
    if (button == 0 && shell->image) Write(shell, name);
}

void OnUnsupportedType(Toolkit*, uint32_t, void* user) {
    Shell_Save(static_cast<Shell*>(user));  // the dialog again
}

bool Exists(const std::string& name) {
    // Asked only when the file can be opened for reading, as the question says.
    std::FILE* file = std::fopen(name.c_str(), "rb");
    if (!file) return false;
    std::fclose(file);
    return true;
}

}  // namespace

void Shell_Save(Shell* shell) {
    if (!shell->image) return;
    const std::string proposed =
        File_DefaultSaveName(shell->currentName.empty() ? nullptr : shell->currentName.c_str());
    Host_Call("filedialog", "FileDialog_FileSetName", const_cast<char*>(proposed.c_str()));
    std::string name;
    if (!Shell_FileDialog("FileDialog_FileSave", &name)) return;
    if (!File_IsSaveableName(name.c_str())) {
        MessageBox_Show(shell->ui.get(), kUnsupportedFileTypeTitle, kUnsupportedFileTypeText,
                        kMessageBoxWarning, OnUnsupportedType, shell, 1, kOkButton);
        return;
    }
    if (Exists(name)) {
        shell->pendingSave = name;
        MessageBox_Show(shell->ui.get(), kOverwriteTitle, kOverwriteText, kMessageBoxError, OnOverwrite,
                        shell, 2, kOverwriteButton, kCancelButton);
        return;
    }
    Write(shell, name);
}
