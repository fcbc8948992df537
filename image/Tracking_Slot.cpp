// Slot names, link records and the safe replacement of a slot file.
//
// A slot's new contents go to a file beside it (the spare for a full record, a
// pending file for a link) that is renamed over the slot only once it is
// complete, so the state a slot held survives any failed write (full disk, no
// permission, a crash half way).
#include "image/Tracking.h"
#include "image/Tracking_Internal.h"

#include "host/Host_Os.h"
#include "host/Host_Path.h"
#include "host/Host_Threads.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

namespace {

constexpr const char* kCouldNotCreateText =
    "Could not create Tracking data. Please make sure Pellucida has read/write permission for the folder "
    "you are running the application from.";
constexpr const char* kCouldNotModifyText =
    "Could not modify Tracking data. Please make sure Pellucida has read/write permission for the folder "
    "you are running the application from.";

constexpr const char* kPendingSuffix = ".new";
constexpr const char* kSpareName = "QV.spare";
constexpr const char* kRetiringName = "QV.old";  // the replaced slot file on its way to be the spare

}  // namespace

std::string Tracking_SlotPath(int a, int b) {
    std::string name = "QVXX.trk";
    name[2] = static_cast<char>('0' + a);
    name[3] = static_cast<char>('0' + b);
    return Host_GetDataDir() + name;
}

std::string Tracking_PendingPath(const std::string& slotPath) {
    return slotPath + kPendingSuffix;
}

bool Tracking_CommitPending(const std::string& pendingPath, const std::string& slotPath) {
    std::error_code ec;
    std::filesystem::rename(Host_Path(pendingPath), Host_Path(slotPath), ec);
    if (!ec) return true;
    std::filesystem::remove(Host_Path(pendingPath), ec);
    return false;
}

std::string Tracking_SparePath() {
    return Host_GetDataDir() + kSpareName;
}

bool Tracking_CommitSpare(const std::string& slotPath) {
    const std::string spare = Tracking_SparePath();
    const std::string retiring = Host_GetDataDir() + kRetiringName;
    std::error_code ec;
    std::filesystem::remove(Host_Path(retiring), ec);
    // A second name keeps the slot's previous file through the rename, which
    // replaces the slot in one step: there is no moment without it. Where hard
    // links are not to be had, the previous file is simply freed.
    bool keep = std::filesystem::is_regular_file(Host_Path(slotPath), ec);
    if (keep) {
        std::filesystem::create_hard_link(Host_Path(slotPath), Host_Path(retiring), ec);
        keep = !ec;
    }
    std::filesystem::rename(Host_Path(spare), Host_Path(slotPath), ec);
    if (ec) {
        if (keep) std::filesystem::remove(Host_Path(retiring), ec);
        return false;
    }
    if (keep) {
        std::filesystem::rename(Host_Path(retiring), Host_Path(spare), ec);
        if (ec) std::filesystem::remove(Host_Path(retiring), ec);
    }
    return true;
}

void Tracking_ShowWriteRefused(const std::string& slotPath) {
    std::error_code ec;
    const bool exists = std::filesystem::exists(Host_Path(slotPath), ec);
    Host_ShowMessage(exists ? kCouldNotModifyText : kCouldNotCreateText);
}

uint32_t Tracking_ReadLink(int a, int b) {
    TrackingFile file(std::fopen(Tracking_SlotPath(a, b).c_str(), "rb"));
    if (!file) return 0;
    uint8_t word[4];
    if (std::fread(word, 1, sizeof word, file.get()) != sizeof word) return 0;
    return Tracking_GetWord(word);
}

bool Tracking_WriteLink(int a, int b, uint32_t target) {
    if (target == 0) return false;
    const std::string path = Tracking_SlotPath(a, b);
    const std::string pending = Tracking_PendingPath(path);
    TrackingFile file(std::fopen(pending.c_str(), "wb"));
    if (!file) {
        Tracking_ShowWriteRefused(path);
        return false;
    }
    uint8_t word[4];
    Tracking_PutWord(word, target);
    const bool written = std::fwrite(word, 1, sizeof word, file.get()) == sizeof word;
    const bool closed = std::fclose(file.release()) == 0;
    if (!written || !closed) {
        std::error_code ec;
        std::filesystem::remove(Host_Path(pending), ec);
        Tracking_ShowWriteRefused(path);
        return false;
    }
    if (!Tracking_CommitPending(pending, path)) {
        Tracking_ShowWriteRefused(path);
        return false;
    }
    return true;
}

void Tracking_ClearSlots(int a) {
    // A slot left by an earlier run holds another image's data: undoing into
    // it would bring back a stranger's picture.
    for (int b = 0; b < 10; ++b) {
        std::error_code ec;
        std::filesystem::remove(Host_Path(Tracking_SlotPath(a, b)), ec);
    }
}

bool Tracking_CreateSlot(int a) {
    // An empty record: reads as no image, and proves the folder takes our files
    // before the user has work to lose.
    const std::string path = Tracking_SlotPath(a, 0);
    TrackingFile file(std::fopen(path.c_str(), "wb"));
    if (!file || std::fclose(file.release()) != 0) {
        Tracking_ShowWriteRefused(path);
        return false;
    }
    return true;
}
