// The shell's side of the history (image/History.h): every kept state is
// stored as it becomes the working data, "BTrU" offers them all in the
// Restore form, and a run that ended without closing is offered back at the
// next start.
#pragma once

#include "image/History.h"

#include <cstddef>
#include <string>
#include <vector>

struct Shell;

struct ShellHistory {
    bool started = false;  // once the main form is up
    HistoryRun run;
    size_t states = 0;                  // in the folder; "BTrU" is greyed out without any
    std::vector<std::string> deadRuns;  // runs that ended without closing, while their question is up
    std::string recoveryPath;           // the newest of their states
    std::vector<HistoryEntry> rows;     // what the Restore form lists, newest first
    bool dropMask = false;              // the step being kept has no mask (a restored state)
};

// Once the main form is up: claims the runs that ended without closing,
// starts this run's marker, and asks whether to take up the last state of a
// dead run (not when a file was given to open).
void Shell_HistoryStart(Shell* shell);
// A clean close: this run's marker goes.
void Shell_HistoryEnd(Shell* shell);
// Stores the working data as a state made by `caption` (after letting go of
// the mask when the step being kept has none).
void Shell_HistoryRecord(Shell* shell, const std::string& caption);
// The caption of a state made by loading `path`: "File loaded: NAME".
std::string Shell_HistoryLoadCaption(const std::string& path);
// One row of the Restore form: "time — caption — W x H", the time local.
std::string Shell_HistoryRowText(const HistoryState& state);
// Greys "BTrU" out while the history is empty.
void Shell_RefreshRestoreButton(Shell* shell);

// "BTrU": the Restore form.
void Shell_ShowRestore(Shell* shell);

inline constexpr const char* kRestoreFormEntry = "Pellucida_Restore.xml";
inline constexpr const char* kRecoveryTitle = "Restore last session?";
inline constexpr const char* kRecoveryRestoreButton = "Restore";
inline constexpr const char* kRecoveryDiscardButton = "Discard";
// Kept steps whose caller names no module.
inline constexpr const char* kHistoryStepCaption = "Processing step";
