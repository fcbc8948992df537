// Message boxes: the modal question or warning drawn by the toolkit over the
// current screen: a title, a text, an icon from the archive and a row of
// buttons labelled by the caller. The caller does not wait; the callback
// receives the index, from the left, of the button pressed, after the box has
// been taken off the screen (so it may open another box at once).
#pragma once

#include "ui/Widget.h"

#include <cstdint>
#include <string>
#include <vector>

// `user` is the pointer given with the callback: the state of whatever asked.
using MessageBoxCallback = void (*)(Toolkit* toolkit, uint32_t buttonIndex, void* user);

// iconType chooses the icon: 0 warning, 1 information, 2 error, 3 success,
// 4 one drawn by code; any other value information.
enum MessageBoxIcon : uint32_t {
    kMessageBoxWarning = 0,
    kMessageBoxInformation = 1,
    kMessageBoxError = 2,
    kMessageBoxSuccess = 3,
    kMessageBoxDrawn = 4,
};

inline constexpr const char* kIconAlert = "icon_alert.sqi";
inline constexpr const char* kIconWarning = "icon_warning.sqi";
inline constexpr const char* kIconInformation = "icon_information.sqi";
inline constexpr const char* kIconError = "icon_error.sqi";
inline constexpr const char* kIconSuccess = "icon_success.sqi";

// The archive entry of an icon type; null for the one drawn by code.
const char* MessageBox_IconName(uint32_t iconType);

// Builds and shows the box with `buttonCount` labels (const char*) following,
// left to right, each expanded for entities. Returns the box's form widget.
Widget* MessageBox_Show(Toolkit* toolkit, const char* title, const char* text, uint32_t iconType,
                        MessageBoxCallback callback, void* user, uint32_t buttonCount, ...);
// The general form: always "icon_alert.sqi".
Widget* MessageBox_ShowAlert(Toolkit* toolkit, const char* title, const char* text,
                             MessageBoxCallback callback, void* user, uint32_t buttonCount, ...);
// The same with the labels in a vector.
Widget* MessageBox_ShowLabels(Toolkit* toolkit, const char* title, const char* text, const char* icon,
                              MessageBoxCallback callback, void* user,
                              const std::vector<std::string>& labels);

// The box's button widgets, left to right (tests, keyboard handling).
std::vector<Widget*> MessageBox_Buttons(Widget* box);
// The box's title; null for a widget that is not a message box.
const char* MessageBox_Title(const Widget* box);

// Expands entity references in a text as markup does (the markup table, then
// the built-in one, a value read again from where the reference began), then
// decodes character references.
std::string Toolkit_ExpandText(const Toolkit* toolkit, const std::string& text);

// The two standard questions.
inline constexpr const char* kCloseTitle = "Close Pellucida";
inline constexpr const char* kCloseText = "Are you sure you wish to close Pellucida?";
inline constexpr const char* kCloseButton = "Close";
inline constexpr const char* kOverwriteTitle = "File already exists";
inline constexpr const char* kOverwriteText = "Would you like to overwrite this file?";
inline constexpr const char* kOverwriteButton = "Overwrite";
inline constexpr const char* kCancelButton = "Cancel";
