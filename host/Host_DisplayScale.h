// The interface scale on desktops that do not report one to the program
// (X11): the user's explicit setting first, then the desktop's font density,
// then the screen's physical density. Pure functions; the backend gathers the
// inputs.
#pragma once

#include <string_view>

// The density an ordinary screen is assumed to have.
inline constexpr double kHostReferenceDpi = 96.0;

// `gdkScale`: the GDK_SCALE variable (null when unset), a whole factor the
// user chose. `xftDpi`: the desktop's "Xft.dpi" resource (0 when unset).
// `screenDpi`: the screen's physical diagonal density (0 when unknown).
// The answer is between 1 and 4: desktop settings in quarter steps, the
// physical density only in half steps from 1.5 up, since many screens report
// a size that is not theirs.
double HostDisplay_ChooseScale(const char* gdkScale, double xftDpi, double screenDpi);

// The "Xft.dpi" value in an X resource database string (the root window's
// RESOURCE_MANAGER property); 0 when it is absent or not a number.
double HostDisplay_XftDpi(std::string_view resources);
