// The "filedialog" and "os" drivers: the platform's open and save dialogs, and
// opening a web link. The dialogs themselves belong to the backend.
#include "host/Host_Drivers.h"

#include "host/Host_Backend.h"
#include "host/Host_Os.h"

#include <string>

namespace {

constexpr size_t kDialogNameLimit = 4095;  // the dialog's 4096-byte name buffer

struct FileDialogState {
    std::string name;
    uint8_t canceled = 0;
};

FileDialogState* State(HostDriver* driver) {
    return static_cast<FileDialogState*>(driver->data);
}

void RunDialog(HostDriver* driver, bool save) {
    FileDialogState* state = State(driver);
    std::string chosen;
    std::string proposed = state->name.substr(0, kDialogNameLimit);
    if (!HostBackend_Current()->FileDialog(save, proposed, &chosen)) {
        state->canceled = 1;  // the previous name stays
        return;
    }
    state->name = chosen;
    state->canceled = 0;
}

void FileOpen(HostDriver* driver, HostMethod*, void*) {
    RunDialog(driver, false);
}
void FileSave(HostDriver* driver, HostMethod*, void*) {
    RunDialog(driver, true);
}

void FileGetName(HostDriver* driver, HostMethod*, void* argument) {
    *static_cast<const char**>(argument) = State(driver)->name.c_str();
}

void FileGetDialogCanceled(HostDriver* driver, HostMethod*, void* argument) {
    *static_cast<uint8_t*>(argument) = State(driver)->canceled;
}

void FileSetName(HostDriver* driver, HostMethod*, void* argument) {
    if (!argument) return;
    State(driver)->name = static_cast<const char*>(argument);
}

void FileDialogDestruct(HostDriver* driver, HostMethod*, void*) {
    delete State(driver);
    driver->data = nullptr;
}

void ShowURL(HostDriver*, HostMethod*, void* argument) {
    HostOs_ShowURL(static_cast<const char*>(argument));
}

void OsDestruct(HostDriver*, HostMethod*, void*) {}  // no private state

}  // namespace

HostDriver* HostDrivers_RegisterFileDialog() {
    HostDriver* driver = Host_DriverCreate("filedialog");
    driver->data = new FileDialogState();
    Host_DriverAddMethod(driver, "FileDialog_FileOpen", FileOpen);
    Host_DriverAddMethod(driver, "FileDialog_FileSave", FileSave);
    Host_DriverAddMethod(driver, "FileDialog_FileGetName", FileGetName);
    Host_DriverAddMethod(driver, "FileDialog_FileGetDialogCanceled", FileGetDialogCanceled);
    Host_DriverAddMethod(driver, "FileDialog_FileSetName", FileSetName);
    Host_DriverAddMethod(driver, "DESTRUCT", FileDialogDestruct);
    return driver;
}

HostDriver* HostDrivers_RegisterOs() {
    HostDriver* driver = Host_DriverCreate("os");
    Host_DriverAddMethod(driver, "OS_ShowURL", ShowURL);
    Host_DriverAddMethod(driver, "DESTRUCT", OsDestruct);
    return driver;
}
