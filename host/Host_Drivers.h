// Registration of the host's own drivers. Host_Init calls HostDrivers_RegisterAll
// (host/Host_Drivers.cpp), which calls each driver's file to register its
// methods under the program's method names; the drivers never call back.
#pragma once

#include "host/Host.h"

HostDriver* HostDrivers_RegisterVideo();
HostDriver* HostDrivers_RegisterEvent();
HostDriver* HostDrivers_RegisterKeyboard();
HostDriver* HostDrivers_RegisterPointer();
HostDriver* HostDrivers_RegisterFileDialog();
HostDriver* HostDrivers_RegisterOs();

// Creates "video", "event", "keyboard", "pointer", "filedialog" and "os" in that
// order with their dependencies, proposes an empty file name and resumes them.
void HostDrivers_RegisterAll();
