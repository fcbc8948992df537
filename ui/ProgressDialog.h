// The progress dialog: a modal panel titled "Progress" with a line of text
// (the stage), a bar and one "Cancel" button. Long operations run their kernel
// with the dialog's KernelControl: the kernel reports its stage and percentage
// from any thread, the dialog shows them on the next tick, and "Cancel" sets
// the atomic cancel flag that the kernel polls.
#pragma once

#include "host/KernelControl.h"
#include "ui/Widget.h"

#include <cstdint>

inline constexpr const char* kProgressTitle = "Progress";
inline constexpr const char* kProgressCancel = "Cancel";

// Opens the dialog over the screen.
Widget* ProgressDialog_Show(Toolkit* toolkit, const char* text);
// The control to hand to the kernel; valid while the dialog is open.
KernelControl ProgressDialog_Control(Widget* dialog);
// Progress from the main thread (redrawn at once).
void ProgressDialog_SetProgress(Toolkit* toolkit, Widget* dialog, int percent);
int ProgressDialog_Percent(const Widget* dialog);
bool ProgressDialog_Cancelled(const Widget* dialog);
Widget* ProgressDialog_CancelButton(Widget* dialog);
// Takes the dialog off the screen.
void ProgressDialog_Close(Toolkit* toolkit, Widget* dialog);
