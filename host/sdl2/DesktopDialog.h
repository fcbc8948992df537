// What the Linux desktop's file dialogs share: the request the SDL2 backend
// makes, how one attempt ended, and the image types offered as filters. The
// portal (Portal_FileChooser.h) is tried first, zenity (Zenity.h) second.
#pragma once

#include <cstdint>
#include <span>
#include <string>

struct DesktopDialogRequest {
    bool save = false;
    std::string title;
    std::string proposed;    // the name to start from; may be empty or have no folder
    uint64_t x11Window = 0;  // the parent window on X11; 0 when unknown
};

enum class DesktopDialogResult {
    kChosen,
    kCanceled,
    kUnavailable,  // this way of showing a dialog does not exist here: try the next
};

struct DesktopDialogFilter {
    const char* name;
    std::span<const char* const> extensions;  // lower case, without the dot
};

// The open dialog offers every type the readers take (all of them first, then
// each type, then all files); the save dialog the types the writers make.
std::span<const DesktopDialogFilter> DesktopDialog_Filters(bool save);

// A glob matching the extension in any case: "tif" gives "*.[tT][iI][fF]".
// File choosers match patterns case-sensitively and cameras write "M42.FIT".
std::string DesktopDialog_Pattern(const char* extension);

// The save dialog's filter for the name's extension; -1 when none takes it.
int DesktopDialog_SaveFilterFor(const std::string& name);

// The folder part of a name (without the last slash) and the rest; the folder
// is empty for a bare name, "/" for a name in the root.
void DesktopDialog_SplitName(const std::string& name, std::string* folder, std::string* base);
