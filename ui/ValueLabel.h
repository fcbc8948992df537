// The level setter's value label: the text that tells the user what the
// slider's position means. What the text says is the caller's (a module
// installs its parameter's formatter on the setter); the toolkit puts it into
// the setter's value label and redraws at once, so the label follows a drag.
#pragma once

#include "ui/WidgetKinds.h"

#include <cstdint>
#include <string>

// The setter's text for a position: its formatter's, or the plain number.
std::string ValueLabel_TextFor(const Widget* setter, uint32_t position);

// Formats the setter's position, puts the text into its value label and runs
// the pending draw requests (plain draws only), so that the label changes while
// the user is still dragging.
void ValueLabel_Update(Toolkit* toolkit, Widget* setter, uint32_t position);
