// "BTrU": the Restore form lists the history newest first; Restore brings the
// chosen state back as a new undoable step (itself stored in the history),
// Close returns to the main form.
#include "app/Shell.h"
#include "app/Shell_History.h"

#include "host/CursorWaitScope.h"
#include "ui/MessageBox.h"
#include "ui/WidgetKinds.h"
#include "ui/widgets/Button.h"
#include "ui/widgets/List.h"

#include <string>

namespace {

constexpr uint32_t kFormId = Widget_PackId("RsFm");
constexpr uint32_t kMainFormId = Widget_PackId("MFrm");
constexpr uint32_t kListId = Widget_PackId("RsLs");
constexpr uint32_t kRestoreId = Widget_PackId("RsOk");
constexpr uint32_t kCloseId = Widget_PackId("RsCl");

constexpr const char* kRestoredPrefix = "Restored: ";
constexpr const char* kUnreadableTitle = "Failed";
constexpr const char* kUnreadableText =
    "This state could not be read: its file is damaged or gone. Nothing was changed.";

void Close(Shell* shell) {
    Shell_HideForm(shell, kFormId);
    Shell_ShowForm(shell, kMainFormId);
    shell->history.rows.clear();
}

// "Restored: " once, however often a state is brought back.
std::string RestoredCaption(const std::string& caption) {
    const std::string prefix = kRestoredPrefix;
    return caption.compare(0, prefix.size(), prefix) == 0 ? caption : prefix + caption;
}

void OnRestore(Toolkit*, Widget*, void* user) {
    Shell* shell = static_cast<Shell*>(user);
    Widget* list = Shell_Find(shell, kListId);
    const auto* record = list ? Widget_Record<ListRecord>(list) : nullptr;
    const std::vector<HistoryEntry>& rows = shell->history.rows;
    if (!record || record->selected < 0 || size_t(record->selected) >= rows.size()) return;
    const HistoryEntry entry = rows[size_t(record->selected)];

    HistoryState state;
    ImagePtr image, mask;
    bool read = false;
    {
        CursorWaitScope wait;
        read = History_ReadFile(entry.path, &state, &image, &mask);
    }
    if (!read) {
        MessageBox_Show(shell->ui.get(), kUnreadableTitle, kUnreadableText, kMessageBoxError, nullptr,
                        nullptr, 1, "OK");
        return;
    }
    Close(shell);
    // A state without a mask has none: the mask of the state before stays
    // with the undo step only.
    shell->history.dropMask = mask == nullptr;
    shell->currentName = state.name;
    shell->outcome = LoadOutcome{state.linear, state.tracking};
    shell->artefacts = false;  // the stacking box was found in the loaded geometry, maybe not this one
    Shell_CommitResult(shell, std::move(image), std::move(mask), RestoredCaption(state.caption).c_str());
}

void OnClose(Toolkit*, Widget*, void* user) {
    Close(static_cast<Shell*>(user));
}

}  // namespace

void Shell_ShowRestore(Shell* shell) {
    std::vector<HistoryEntry> rows = History_List(shell->history.run.folder);
    if (rows.empty() || !Shell_Find(shell, kFormId)) return;
    std::vector<std::string> items;
    for (const HistoryEntry& row : rows) items.push_back(Shell_HistoryRowText(row.state));
    shell->history.rows = std::move(rows);

    Shell_HideForm(shell, kMainFormId);
    Shell_ShowForm(shell, kFormId);
    Toolkit* ui = shell->ui.get();
    if (Widget* button = Shell_Find(shell, kRestoreId)) Button_SetCallback(button, OnRestore, shell);
    if (Widget* button = Shell_Find(shell, kCloseId)) Button_SetCallback(button, OnClose, shell);
    if (Widget* list = Shell_Find(shell, kListId)) {
        List_SetItems(ui, list, std::move(items));
        List_Select(ui, list, 0);
    }
}
