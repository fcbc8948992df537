// Entities: named texts that markup refers to as "&name;", the built-in ones
// that describe the screen and the user's settings, the metric entities derived
// from the minimal object size, and the character references of attribute
// values.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct Toolkit;

struct EntityPair {
    std::string name;  // whole, with its "&" and ";"
    std::string value;
};

// Ordered pairs; a name occurs at most once.
struct EntityTable {
    std::vector<EntityPair> pairs;
};

// Adds the pair or replaces the value of the pair with that name. A missing or
// empty name or value does nothing.
void Entity_Define(EntityTable* table, const char* name, const char* value);
// The value of the pair named exactly `name`, or null.
const char* Entity_Lookup(const EntityTable* table, std::string_view name);

// Decodes &quot; &amp; &apos; &gt; &lt; and "&#x" hex ";" (one byte each) in
// place. A numeric reference with a character that is not a hex digit gives a
// byte of 0, which ends the text.
void Entity_DecodeCharacters(std::string* text);

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
// The size the screen suggests, min(width, height) / 18, with the normal cap of 48.
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
