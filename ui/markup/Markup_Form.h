// Building widgets from form markup: conditional sections, ENTITY definitions,
// every element and attribute of the program's forms, and placement of each
// widget in the layout that encloses it.
#pragma once

#include <cstddef>
#include <cstdint>

struct Toolkit;
struct Widget;

// Printed, with the entry name, when a form opens more elements than it closes
// or the other way round; what was built stays in the tree.
inline constexpr const char* kMarkupUnbalancedMessage = "OPENS != CLOSES <%s>\n";

// Reads the archive entry `resourceName` and builds its widgets as children of
// `parent` (the root when null). Returns the first widget built at the top
// level, or null.
Widget* Form_Load(Toolkit* toolkit, const char* resourceName, Widget* parent);

// The same from markup already in memory; `name` is used for the message.
Widget* Form_LoadText(Toolkit* toolkit, const char* name, const uint8_t* data, size_t size, Widget* parent);
