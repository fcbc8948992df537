// Recording kept states in the history, this run's marker, and the question
// at start-up when the last run ended without closing.
#include "app/Shell_History.h"
#include "app/Shell.h"

#include "host/CursorWaitScope.h"
#include "ui/MessageBox.h"
#include "ui/WidgetKinds.h"
#include "ui/widgets/Button.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <utility>
#include <vector>

namespace {

constexpr const char* kRecoveryText =
    "Pellucida did not close normally last time. Its last state is still in the history:\n\n%s\n\n"
    "Restore it as the working image, or discard what that session left?";
constexpr const char* kRecoveryFailedTitle = "Failed";
constexpr const char* kRecoveryFailedText =
    "The last state of that session could not be read: its file is damaged or gone. Nothing was changed.";
constexpr const char* kNotStoredText = "History: the state could not be stored\n";
constexpr const char* kLoadCaption = "File loaded: ";

int64_t NowMs() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

std::string BaseName(const std::string& path) {
    const size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

void CountStates(Shell* shell) {
    shell->history.states = History_List(shell->history.run.folder).size();
    Shell_RefreshRestoreButton(shell);
}

void TakeUp(Shell* shell, const std::string& path) {
    HistoryState state;
    ImagePtr image, mask;
    bool read = false;
    {
        CursorWaitScope wait;
        read = History_ReadFile(path, &state, &image, &mask);
    }
    if (!read) {
        MessageBox_Show(shell->ui.get(), kRecoveryFailedTitle, kRecoveryFailedText, kMessageBoxError, nullptr,
                        nullptr, 1, "OK");
        return;
    }
    // As if it had just been loaded: no undo step from another session.
    Shell_SetImage(shell, std::move(image));
    shell->mask = std::move(mask);
    shell->currentName = state.name;
    shell->outcome = LoadOutcome{state.linear, state.tracking};
    shell->artefacts = false;
    shell->undo = ShellUndo{};
    Shell_RefreshMain(shell);
}

// "Restore" is the last button, the one Enter answers: a user who only wants
// the box gone keeps the work.
void OnRecoveryAnswer(Toolkit*, uint32_t button, void* user) {
    Shell* shell = static_cast<Shell*>(user);
    ShellHistory& history = shell->history;
    if (button == 1) {
        TakeUp(shell, history.recoveryPath);
    } else {
        for (const std::string& run : history.deadRuns) History_RemoveRun(history.run.folder, run);
        CountStates(shell);
    }
    history.deadRuns.clear();
    history.recoveryPath.clear();
}

}  // namespace

std::string Shell_HistoryLoadCaption(const std::string& path) {
    return kLoadCaption + BaseName(path);
}

std::string Shell_HistoryRowText(const HistoryState& state) {
    const std::time_t seconds = static_cast<std::time_t>(state.timeMs / 1000);
    std::tm local{};
    char when[32] = "?";
    if (const std::tm* t = std::localtime(&seconds)) {
        local = *t;
        std::strftime(when, sizeof when, "%Y-%m-%d %H:%M:%S", &local);
    }
    char size[32];
    std::snprintf(size, sizeof size, "%d x %d", state.width, state.height);
    return std::string(when) + " \u2014 " + state.caption + " \u2014 " + size;
}

void Shell_HistoryStart(Shell* shell) {
    ShellHistory& history = shell->history;
    if (history.started) return;
    history.started = true;
    const std::string folder = History_Folder();
    const std::vector<std::string> dead = History_ClaimDeadRuns(folder);
    // Without a marker the states are still kept; only a crash of this run
    // would go unnoticed.
    if (!History_BeginRun(folder, &history.run)) std::fputs("History: no marker for this run\n", stdout);
    CountStates(shell);
    if (dead.empty() || !shell->openOnStart.empty()) return;

    for (const HistoryEntry& entry : History_List(folder)) {
        if (std::find(dead.begin(), dead.end(), entry.run) == dead.end()) continue;
        history.deadRuns = dead;
        history.recoveryPath = entry.path;
        const std::string row = Shell_HistoryRowText(entry.state);
        std::vector<char> text(std::strlen(kRecoveryText) + row.size() + 1);
        std::snprintf(text.data(), text.size(), kRecoveryText, row.c_str());
        MessageBox_Show(shell->ui.get(), kRecoveryTitle, text.data(), kMessageBoxWarning, OnRecoveryAnswer,
                        shell, 2, kRecoveryDiscardButton, kRecoveryRestoreButton);
        return;
    }
}

void Shell_HistoryEnd(Shell* shell) {
    History_EndRun(&shell->history.run);
}

void Shell_HistoryRecord(Shell* shell, const std::string& caption) {
    ShellHistory& history = shell->history;
    if (std::exchange(history.dropMask, false)) shell->mask.reset();
    if (!history.started || !shell->image) return;
    HistoryState state;
    state.caption = caption;
    state.name = shell->currentName;
    state.timeMs = NowMs();
    state.linear = shell->outcome.linear;
    state.tracking = shell->outcome.tracking;
    // A mask of another size than the image (left from before a step that
    // changed the size) is not part of the state.
    const ImageBuffer* mask = shell->mask.get();
    if (mask && (mask->width != shell->image->width || mask->height != shell->image->height)) mask = nullptr;
    {
        CursorWaitScope wait;
        if (History_Store(&history.run, state, shell->image.get(), mask, kHistoryBudgetBytes).empty()) {
            std::fputs(kNotStoredText, stdout);
            std::fflush(stdout);
        }
    }
    CountStates(shell);
}

void Shell_RefreshRestoreButton(Shell* shell) {
    Widget* form = Shell_Find(shell, Widget_PackId("MFrm"));
    if (Widget* button = form ? Widget_FindById(form, Widget_PackId("BTrU")) : nullptr)
        Button_SetEnabled(shell->ui.get(), button, shell->history.states > 0);
}
