// The theme's colours in the context and its proportions.
#include "ui/Theme.h"

#include "ui/Toolkit.h"

#include <algorithm>

void Theme_Apply(Toolkit* toolkit) {
    toolkit->background = theme::kGround;
    toolkit->tint[0] = theme::kTint0;
    toolkit->tint[1] = theme::kTint1;
    toolkit->tint[2] = theme::kTint2;
}

// A quarter of the height reads as rounded without turning small controls into pills.
int32_t Theme_Radius(int32_t controlHeight) {
    return std::clamp(controlHeight / 4, 2, 10);
}

int32_t Theme_Gap(const Toolkit* toolkit) {
    return std::max(2, toolkit->minimalObjectSizeY / 8);
}
