// The history folder: runs and their markers, storing a run's states, the
// list newest first, the disk budget, and the runs that ended without closing.
//
// Names: a run's marker is "<run>.run"; its states are "<run>_<number>.pst",
// each first written as "<name>.tmp". A run's identifier is its start time and
// a random number, so that two programs starting at once never share one.
#include "image/History.h"

#include "host/Host_Os.h"
#include "host/Host_Path.h"

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr const char* kFolderName = "history";
constexpr const char* kStateSuffix = ".pst";
constexpr const char* kMarkerSuffix = ".run";
constexpr const char* kTemporarySuffix = ".tmp";
constexpr const char* kNewMarkerSuffix = ".run.new";

bool EndsWith(const std::string& text, const std::string& suffix) {
    return text.size() >= suffix.size() &&
           text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

// The run a file of the folder belongs to: the part of its name before the
// last '_'; "" for a name that has none.
std::string RunOf(const std::string& fileName) {
    const size_t cut = fileName.rfind('_');
    return cut == std::string::npos ? std::string() : fileName.substr(0, cut);
}

std::string NewRunId() {
    const int64_t ms = std::chrono::duration_cast<std::chrono::milliseconds>(
                           std::chrono::system_clock::now().time_since_epoch())
                           .count();
    std::random_device random;
    char id[40];
    std::snprintf(id, sizeof id, "%013" PRId64 "-%08x", ms, static_cast<unsigned>(random()));
    return id;
}

// Every state file of the folder with its header, in no particular order;
// `damaged` receives those whose header does not read.
std::vector<HistoryEntry> Scan(const std::string& folder, std::vector<std::string>* damaged) {
    std::vector<HistoryEntry> entries;
    std::error_code ec;
    for (fs::directory_iterator it(Host_Path(folder), ec), end; !ec && it != end; it.increment(ec)) {
        const std::string fileName = Host_PathText(it->path().filename());
        if (!EndsWith(fileName, kStateSuffix) || !it->is_regular_file(ec)) continue;
        HistoryEntry entry;
        entry.path = Host_PathText(it->path());
        entry.run = RunOf(fileName);
        entry.bytes = it->file_size(ec);
        if (ec || !History_ReadHeader(entry.path, &entry.state)) {
            if (damaged) damaged->push_back(entry.path);
            ec.clear();
            continue;
        }
        entries.push_back(std::move(entry));
    }
    std::sort(entries.begin(), entries.end(), [](const HistoryEntry& a, const HistoryEntry& b) {
        if (a.state.timeMs != b.state.timeMs) return a.state.timeMs > b.state.timeMs;
        return a.path > b.path;
    });
    return entries;
}

}  // namespace

std::string History_Folder() {
    const std::string folder = Host_GetDataDir() + kFolderName;
    std::error_code ec;
    fs::create_directories(Host_Path(folder), ec);
    return folder + Host_PathSeparator();
}

bool History_BeginRun(const std::string& folder, HistoryRun* run) {
    std::error_code ec;
    fs::create_directories(Host_Path(folder), ec);
    run->folder = folder;
    run->id = NewRunId();
    run->next = 1;
    // Locked under another name first: a marker is never seen unheld, so a
    // program starting at this moment cannot take it for a dead run's.
    const std::string fresh = folder + run->id + kNewMarkerSuffix;
    run->lock = HostOs_LockFile(fresh.c_str());
    if (run->lock < 0) return false;
    fs::rename(Host_Path(fresh), Host_Path(folder + run->id + kMarkerSuffix), ec);
    if (ec) {
        HostOs_UnlockFile(run->lock);
        run->lock = -1;
        fs::remove(Host_Path(fresh), ec);
        return false;
    }
    return true;
}

void History_EndRun(HistoryRun* run) {
    if (run->lock < 0) return;
    std::error_code ec;
    fs::remove(Host_Path(run->folder + run->id + kMarkerSuffix), ec);
    HostOs_UnlockFile(run->lock);
    run->lock = -1;
}

std::string History_Store(HistoryRun* run, const HistoryState& state, const ImageBuffer* image,
                          const ImageBuffer* mask, uint64_t budget) {
    char number[16];
    std::snprintf(number, sizeof number, "_%06u", run->next);
    const std::string path = run->folder + run->id + number + kStateSuffix;
    if (!History_WriteFile(path, state, image, mask)) return {};
    ++run->next;
    History_Trim(run->folder, budget);
    return path;
}

std::vector<HistoryEntry> History_List(const std::string& folder) {
    return Scan(folder, nullptr);
}

void History_Trim(const std::string& folder, uint64_t budget) {
    std::vector<std::string> damaged;
    std::vector<HistoryEntry> entries = Scan(folder, &damaged);
    std::error_code ec;
    for (const std::string& path : damaged) fs::remove(Host_Path(path), ec);
    uint64_t total = 0;
    for (const HistoryEntry& entry : entries) total += entry.bytes;
    // Oldest at the back; the newest (front) stays whatever it costs.
    while (total > budget && entries.size() > 1) {
        fs::remove(Host_Path(entries.back().path), ec);
        total -= entries.back().bytes;
        entries.pop_back();
    }
}

std::vector<std::string> History_ClaimDeadRuns(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code ec;
    for (fs::directory_iterator it(Host_Path(folder), ec), end; !ec && it != end; it.increment(ec))
        names.push_back(Host_PathText(it->path().filename()));
    std::vector<std::string> dead;
    for (const std::string& name : names) {
        const bool marker = EndsWith(name, kMarkerSuffix);
        // A marker still under its first name: its run died before it began.
        if (!marker && !EndsWith(name, kNewMarkerSuffix)) continue;
        const std::string path = folder + name;
        const int64_t lock = HostOs_LockFile(path.c_str());
        if (lock < 0) continue;  // its run is alive
        fs::remove(Host_Path(path), ec);
        HostOs_UnlockFile(lock);
        if (marker) dead.push_back(name.substr(0, name.size() - std::string(kMarkerSuffix).size()));
    }
    // Half-written states of the dead runs are nobody's now.
    for (const std::string& name : names)
        if (EndsWith(name, kTemporarySuffix) &&
            std::find(dead.begin(), dead.end(), RunOf(name)) != dead.end())
            fs::remove(Host_Path(folder + name), ec);
    return dead;
}

void History_RemoveRun(const std::string& folder, const std::string& run) {
    std::vector<fs::path> doomed;
    std::error_code ec;
    for (fs::directory_iterator it(Host_Path(folder), ec), end; !ec && it != end; it.increment(ec)) {
        const std::string fileName = Host_PathText(it->path().filename());
        if (EndsWith(fileName, kStateSuffix) && RunOf(fileName) == run) doomed.push_back(it->path());
    }
    for (const fs::path& path : doomed) fs::remove(path, ec);
}
