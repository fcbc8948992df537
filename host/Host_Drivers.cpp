// The drivers the host registers at start-up, their order and dependencies.
// Kept apart from the main loop: the loop asks for the drivers, the drivers'
// files register their methods, and nothing calls back the other way.
#include "host/Host_Drivers.h"

void HostDrivers_RegisterAll() {
    HostDriver* video = HostDrivers_RegisterVideo();
    HostDriver* event = HostDrivers_RegisterEvent();
    HostDriver* keyboard = HostDrivers_RegisterKeyboard();
    HostDriver* pointer = HostDrivers_RegisterPointer();
    HostDriver* fileDialog = HostDrivers_RegisterFileDialog();
    HostDriver* os = HostDrivers_RegisterOs();

    Host_DriverAddDependency(event, video);
    Host_DriverAddDependency(keyboard, event);
    Host_DriverAddDependency(pointer, event);
    Host_DriverAddDependency(fileDialog, video);

    for (HostDriver* driver : {video, event, keyboard, pointer, fileDialog, os}) Host_DriverResume(driver);
    // No name is proposed to the first file dialog.
    Host_Call("filedialog", "FileDialog_FileSetName", const_cast<char*>(""));
}
