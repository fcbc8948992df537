// The toolkit's entities: the built-in ones that describe the screen and the
// user's settings, the metric entities derived from the minimal object size,
// and the lookup markup uses (the tables themselves: ui/Entity_Table.h).
#pragma once

#include "ui/Entity_Table.h"

#include <cstdint>
#include <string_view>

struct Toolkit;

// Looks a reference up as markup does: the markup table first, then the
// built-in table.
const char* Toolkit_LookupEntity(const Toolkit* toolkit, std::string_view reference);

// Defines the built-in entities that a new context carries.
void Toolkit_DefineSystemEntities(Toolkit* toolkit);

// Records the screen and defines "&system-orientation;" from it.
void Toolkit_SetScreen(Toolkit* toolkit, uint32_t width, uint32_t height, uint32_t pixelsPerRow,
                       uint32_t* framebuffer);
// Asks the "video" driver for the framebuffer and its size, records them,
// defines the orientation and clears the framebuffer to the background colour.
void Toolkit_MeasureScreen(Toolkit* toolkit);

// Stores the minimal object size (capped at maxX, maxY) and (re)defines the
// metric entities from it.
void Toolkit_SetMinimalObjectSize(Toolkit* toolkit, int32_t sx, int32_t sy, int32_t maxX, int32_t maxY);
// Asks the "video" driver for the desktop's interface scale (100 percent when
// it has none to give).
void Toolkit_MeasureDisplayScale(Toolkit* toolkit);
// The size the screen suggests, min(width, height) / 18, with the normal cap of
// 48 pixels at a display scale of 100 percent, raised in proportion above it.
void Toolkit_SetMetricsFromScreen(Toolkit* toolkit);

// A metric entity read back as a decimal integer; 0 when it is not defined.
int32_t Toolkit_MetricPixels(const Toolkit* toolkit, const char* name);

// Entity names the toolkit itself defines or reads.
inline constexpr const char* kEntityLanguage = "&system-language;";
inline constexpr const char* kEntityOrientation = "&system-orientation;";
inline constexpr const char* kEntityButtonSize = "&system-buttonSizePixels;";
inline constexpr const char* kEntitySliderHeight = "&system-sliderHeightPixels;";
inline constexpr const char* kEntityLabelInset = "&system-labelInsetPixels;";
inline constexpr const char* kEntityMinimalObjectSize = "&system-minimalobjectsizepixels;";
