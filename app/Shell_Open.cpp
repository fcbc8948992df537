// Opening an image: the open dialog (or a dropped or given path), the name
// check, the load under the wait cursor, then the questions the file raises,
// one message box at a time, and the answers applied.
#include "app/Shell.h"

#include "formats/File_Names.h"
#include "host/CursorWaitScope.h"
#include "host/Host.h"
#include "ui/MessageBox.h"

namespace {

constexpr const char* kOkButton = "OK";
constexpr const char* kWhyButton = "Why only these formats?";
constexpr const char* kWhyTitle = "Supported formats";
constexpr const char* kWhyText =
    "Pellucida only reads FITS, PNG files and uncompressed, IBM PC byte-order TIFF files. It also reads "
    "baseline JPEG files, 24- and 32-bit BMP files and the raw frames of a few cameras.\n\n"
    "Compressed TIFF files, progressive JPEG files and tile-compressed FITS files are not read: save your "
    "stack from your stacking program as an uncompressed TIFF or as FITS, preferably with 16 or 32 bits per "
    "sample, so that no data is lost before processing.";

void AskNext(Shell* shell);

void OnAnswer(Toolkit*, uint32_t button, void* user) {
    Shell* shell = static_cast<Shell*>(user);
    ShellPendingLoad* load = shell->pendingLoad.get();
    if (!load) return;
    LoadQuestion question;
    if (File_NextLoadQuestion(load->info, load->answers, &question))
        File_AnswerLoadQuestion(&load->answers, question.id, static_cast<int>(button));
    AskNext(shell);
}

// Every question answered: the answers act and are logged, and the image
// becomes the working image.
void Finish(Shell* shell) {
    std::unique_ptr<ShellPendingLoad> load = std::move(shell->pendingLoad);
    {
        CursorWaitScope wait;
        shell->outcome = File_ApplyLoadAnswers(load->image.get(), load->info, load->answers);
    }
    Shell_SetImage(shell, std::move(load->image));
    shell->mask.reset();
    shell->currentName = load->path;
    shell->artefacts = load->info.artefacts;
    shell->artefactBox = load->info.box;
    shell->undo = ShellUndo{};
    Shell_RefreshMain(shell);
}

void AskNext(Shell* shell) {
    ShellPendingLoad* load = shell->pendingLoad.get();
    LoadQuestion question;
    if (!File_NextLoadQuestion(load->info, load->answers, &question)) {
        Finish(shell);
        return;
    }
    const std::vector<std::string> labels(question.buttons.begin(), question.buttons.end());
    const char* icon = question.id == LoadQuestionId::kArtefacts ? kIconWarning : kIconInformation;
    MessageBox_ShowLabels(shell->ui.get(), question.title, question.text, icon, OnAnswer, shell, labels);
}

void OnFailed(Toolkit* toolkit, uint32_t button, void*) {
    if (button == 1)
        MessageBox_Show(toolkit, kWhyTitle, kWhyText, kMessageBoxInformation, nullptr, nullptr, 1, kOkButton);
}

void OnUnknownType(Toolkit*, uint32_t, void* user) {
    Shell_Open(static_cast<Shell*>(user));  // the dialog again
}

}  // namespace

bool Shell_FileDialog(const char* method, std::string* chosen) {
    Host_Call("filedialog", method, nullptr);
    uint8_t canceled = 1;  // stays 1 when no dialog driver answers
    Host_Call("filedialog", "FileDialog_FileGetDialogCanceled", &canceled);
    const char* name = nullptr;
    if (!canceled) Host_Call("filedialog", "FileDialog_FileGetName", &name);
    if (!name) return false;
    *chosen = name;
    return true;
}

void Shell_Open(Shell* shell) {
    std::string name;
    if (!Shell_FileDialog("FileDialog_FileOpen", &name)) return;
    if (!File_IsOpenableName(name.c_str())) {
        MessageBox_Show(shell->ui.get(), kUnknownFileTypeTitle, kUnknownFileTypeText, kMessageBoxWarning,
                        OnUnknownType, shell, 1, kOkButton);
        return;
    }
    Shell_OpenPath(shell, name);
}

void Shell_OpenPath(Shell* shell, const std::string& path) {
    auto load = std::make_unique<ShellPendingLoad>();
    load->path = path;
    {
        CursorWaitScope wait;
        load->image.reset(File_LoadImageData(path.c_str(), &load->info));
    }
    if (!load->image) {
        MessageBox_Show(shell->ui.get(), kLoadFailedTitle, kLoadFailedText, kMessageBoxError, OnFailed, shell,
                        2, kOkButton, kWhyButton);
        return;
    }
    shell->pendingLoad = std::move(load);
    AskNext(shell);
}
