// The history: every state of the working data the user kept (the image as
// loaded, each step kept, each state brought back), one file per state in the
// folder "history" of the data folder, so that any of them can be restored and
// a run that ended without closing (a crash, a kill, a power cut) can be taken
// up again at the next start.
//
// A state file ("<run>_<number>.pst") holds a header (what made the state,
// when, the working file's name, the size, mono, linear and tracked, whether
// a mask follows), the
// image's red, green and blue planes as runs of LZ4 blocks in the tracking
// store's format, and, when there is one, the mask's bit depth and its three
// planes the same way. Files are written under a temporary name and renamed
// once complete, and the reader checks every length against the file, so a
// half-written or damaged file is never taken for a state.
//
// Each run holds a marker file ("<run>.run") locked for as long as it lives;
// a marker nobody holds belongs to a run that ended without closing.
#pragma once

#include "image/Image.h"

#include <cstdint>
#include <string>
#include <vector>

// What a state file's header says about its state.
struct HistoryState {
    std::string caption;  // what made it: "File loaded: M94.tif", a module's name
    std::string name;     // the working file's name at the time (the title shows it)
    int64_t timeMs = 0;   // wall-clock time, milliseconds since 1970
    int32_t width = 0;
    int32_t height = 0;
    bool mono = false;
    bool hasMask = false;
    bool linear = true;    // what the load decided about the data: it is linear...
    bool tracking = true;  // ...and its signal is tracked
};

struct HistoryEntry {
    HistoryState state;
    std::string path;
    std::string run;     // the run that stored it
    uint64_t bytes = 0;  // the file's size on disk
};

// A run of the program: where its states go and the marker it holds.
struct HistoryRun {
    std::string folder;
    std::string id;
    int64_t lock = -1;
    uint32_t next = 1;  // number of the next state
};

// The space all states together may take before the oldest are dropped.
inline constexpr uint64_t kHistoryBudgetBytes = uint64_t{4} << 30;

// The history folder of the data folder, with a trailing separator, created.
std::string History_Folder();

// One state file. The mask, when given, must have the image's size. False,
// with nothing left at `path` that was not there before, when it cannot be
// written completely.
bool History_WriteFile(const std::string& path, const HistoryState& state, const ImageBuffer* image,
                       const ImageBuffer* mask);
// The header alone (the list). False for a file that is not a state file.
bool History_ReadHeader(const std::string& path, HistoryState* state);
// The whole state; `mask` is left empty when the state has none. False, with
// nothing allocated, for a missing, truncated or damaged file: every length,
// size and sample is checked, none trusted.
bool History_ReadFile(const std::string& path, HistoryState* state, ImagePtr* image, ImagePtr* mask);

// Starts this process's run in `folder`: a new identifier and its marker,
// locked. False when the folder refuses the marker.
bool History_BeginRun(const std::string& folder, HistoryRun* run);
// A clean close: the marker goes; the states stay in the history.
void History_EndRun(HistoryRun* run);
// Stores a state of the run, then drops the oldest states of the folder until
// all fit in `budget` bytes. The new file's path, or "" when it could not be
// written.
std::string History_Store(HistoryRun* run, const HistoryState& state, const ImageBuffer* image,
                          const ImageBuffer* mask, uint64_t budget);

// Every state of the folder, newest first (by time, then by file name).
// Files that are not state files, or whose header is damaged, are left out.
std::vector<HistoryEntry> History_List(const std::string& folder);
// Drops the oldest states until the rest take at most `budget` bytes; the
// newest state is kept whatever its size. Damaged state files go first.
void History_Trim(const std::string& folder, uint64_t budget);

// Runs that ended without closing: markers that no living run holds. Each is
// claimed (its marker and any half-written file of the run removed), so that
// a second program starting at the same time does not offer it again. Their
// identifiers.
std::vector<std::string> History_ClaimDeadRuns(const std::string& folder);
// Removes every state of `run`.
void History_RemoveRun(const std::string& folder, const std::string& run);
