// Opening an image: the open dialog (or a dropped or given path), the name
// check, the load under the wait cursor, then the questions the file raises,
// one message box at a time, and the answers applied.
#include "app/Shell.h"
#include "app/Shell_Module.h"

#include "formats/File_Names.h"
#include "host/CursorWaitScope.h"
#include "host/Host.h"
#include "host/Host_Threads.h"
#include "host/KernelControl.h"
#include "ui/MessageBox.h"
#include "ui/ProgressDialog.h"

#include <algorithm>
#include <cstdio>

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

// Colour data gets a help button beside the dataset answers: whether a stack
// from a one-shot-colour camera is still linear is the question new users
// cannot answer. The help shows what the histogram suggests, and "I'm not
// sure" takes that suggestion.
constexpr const char* kOscHelpButton = "How can I tell if my OSC/DSLR data is linear and unstretched?";
constexpr const char* kOscHelpTitle = "Linear or stretched?";
constexpr const char* kNotSureButton = "I'm not sure";
constexpr const char* kOscHelpText =
    "A stack straight from your stacking program, saved as FITS or as a 16- or 32-bit TIFF, is linear: "
    "on a normal screen it looks almost black, with only the brightest stars showing. If it already shows "
    "the nebula or galaxy with a grey or coloured sky, it has been stretched.\n\n"
    "Data from a one-shot-colour camera or a DSLR whose colours look strongly green (or pink) has not "
    "been white balanced: choose the OSC/DSLR answer and Pellucida balances it.\n\n"
    "Judging by its histogram, this image looks %s: half of its samples lie below %.1f%% of full scale "
    "(linear stacks are usually below 5%%). Choose \"I'm not sure\" to go with that.";
constexpr double kLinearMedianLimit = 0.05;

// The median of the green plane as a fraction of full scale, from a sparse
// sample: enough to tell a dark linear stack from a stretched picture.
double MedianFraction(const ImageBuffer& image) {
    const int64_t* plane = image.green ? image.green : image.red;
    std::vector<int64_t> samples;
    const int32_t step = std::max(1, std::min(image.width, image.height) / 256);
    for (int32_t y = 0; y < image.height; y += step)
        for (int32_t x = 0; x < image.width; x += step)
            samples.push_back(plane[size_t(y) * image.stride + x]);
    auto middle = samples.begin() + std::ptrdiff_t(samples.size() / 2);
    std::nth_element(samples.begin(), middle, samples.end());
    return image.maxValue > 0 ? double(*middle) / double(image.maxValue) : 0.0;
}

bool HasHelp(const LoadInfo& info, const LoadQuestion& question) {
    return question.id == LoadQuestionId::kDataset && !info.grey;
}

void AskNext(Shell* shell);

void OnHelpAnswer(Toolkit*, uint32_t button, void* user) {
    Shell* shell = static_cast<Shell*>(user);
    ShellPendingLoad* load = shell->pendingLoad.get();
    if (!load) return;
    if (button == 1) {
        const bool linear = MedianFraction(*load->image) < kLinearMedianLimit;
        File_AnswerLoadQuestion(
            &load->answers, LoadQuestionId::kDataset,
            File_DatasetButton(linear ? DatasetAnswer::kLinear : DatasetAnswer::kNonLinearSrgb,
                               load->info.grey));
    }
    AskNext(shell);  // "OK" asks the question again
}

void ShowOscHelp(Shell* shell) {
    const double median = MedianFraction(*shell->pendingLoad->image);
    char text[1400];
    std::snprintf(text, sizeof text, kOscHelpText, median < kLinearMedianLimit ? "linear" : "stretched",
                  median * 100.0);
    MessageBox_Show(shell->ui.get(), kOscHelpTitle, text, kMessageBoxInformation, OnHelpAnswer, shell, 2,
                    kOkButton, kNotSureButton);
}

void OnAnswer(Toolkit*, uint32_t button, void* user) {
    Shell* shell = static_cast<Shell*>(user);
    ShellPendingLoad* load = shell->pendingLoad.get();
    if (!load) return;
    LoadQuestion question;
    if (File_NextLoadQuestion(load->info, load->answers, &question)) {
        if (HasHelp(load->info, question) && button == question.buttons.size()) {
            ShowOscHelp(shell);
            return;
        }
        File_AnswerLoadQuestion(&load->answers, question.id, static_cast<int>(button));
    }
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
    shell->globalStretchKept = false;  // new data: nothing kept of it yet
    shell->trackedReference = false;
    Shell_HistoryRecord(shell, Shell_HistoryLoadCaption(load->path));
    Shell_RefreshMain(shell);
}

void AskNext(Shell* shell) {
    ShellPendingLoad* load = shell->pendingLoad.get();
    LoadQuestion question;
    if (!File_NextLoadQuestion(load->info, load->answers, &question)) {
        Finish(shell);
        return;
    }
    std::vector<std::string> labels(question.buttons.begin(), question.buttons.end());
    if (HasHelp(load->info, question)) labels.push_back(kOscHelpButton);
    const char* icon = question.id == LoadQuestionId::kArtefacts ? kIconWarning : kIconInformation;
    MessageBox_ShowLabels(shell->ui.get(), question.title, question.text, icon, OnAnswer, shell, labels);
}

void OnFailed(Toolkit* toolkit, uint32_t button, void*) {
    if (button == 1)
        MessageBox_Show(toolkit, kWhyTitle, kWhyText, kMessageBoxInformation, nullptr, nullptr, 1, kOkButton);
}

// The progress dialog comes up once a read has taken half a second.
constexpr uint32_t kProgressAfterTicks = 5;

std::string BaseName(const std::string& path) {
    const size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

void ReportLoad(void* context, const char*, int percent) {
    static_cast<ShellLoadTask*>(context)->percent.store(percent);
}

// The background task: the reader runs off the main thread, so the window
// keeps drawing and the dialog's Cancel answers.
void ReadFile(void* context) {
    auto* task = static_cast<ShellLoadTask*>(context);
    const KernelControl control{&task->cancel, ReportLoad, task};
    task->image = File_LoadImageData(task->path.c_str(), &task->info, &control);
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
    if (shell->loading) return;
    auto task = std::make_unique<ShellLoadTask>();
    task->path = path;
    shell->loading = std::move(task);
    Host_Call("video", "Video_SetCursorWait", nullptr);
    if (Host_IsBackgroundRunning()) {  // the one background task is taken: read here
        ReadFile(shell->loading.get());
        Shell_PollLoad(shell, 0);
        return;
    }
    shell->loading->background = true;
    Host_StartBackgroundTask(ReadFile, shell->loading.get());
}

bool Shell_Busy() {
    const Shell* shell = Shell_Get();
    return shell && (shell->loading || (shell->module && shell->module->running));
}

void Shell_PollLoad(Shell* shell, uint32_t ticks) {
    ShellLoadTask* task = shell->loading.get();
    if (!task) return;
    if (task->background && Host_IsBackgroundRunning()) {
        task->ticks += ticks;
        if (!task->progress && task->ticks >= kProgressAfterTicks)
            task->progress =
                ProgressDialog_Show(shell->ui.get(), ("Opening " + BaseName(task->path)).c_str());
        if (task->progress) {
            if (ProgressDialog_Cancelled(task->progress)) task->cancel = true;
            ProgressDialog_SetProgress(shell->ui.get(), task->progress, task->percent.load());
        }
        return;
    }
    std::unique_ptr<ShellLoadTask> done = std::move(shell->loading);
    if (done->background) Host_TakeBackgroundFinished();
    if (done->progress) ProgressDialog_Close(shell->ui.get(), done->progress);
    Host_Call("video", "Video_SetCursorArrow", nullptr);
    if (done->cancel) {
        Image_Free(done->image);
        return;
    }
    if (!done->image) {
        MessageBox_Show(shell->ui.get(), kLoadFailedTitle, kLoadFailedText, kMessageBoxError, OnFailed, shell,
                        2, kOkButton, kWhyButton);
        return;
    }
    auto load = std::make_unique<ShellPendingLoad>();
    load->path = done->path;
    load->image.reset(done->image);
    load->info = done->info;
    shell->pendingLoad = std::move(load);
    AskNext(shell);
}
