// The toolkit's look: a dark theme for long sessions at night. Low-luminance
// greys keep the eyes adapted to the dark; the accent is a warm red that does
// not spoil night vision. Every colour is a 5-6-5 value, as the framebuffer
// keeps them.
#pragma once

#include "ui/draw/Draw_Colour.h"

#include <cstdint>

struct Toolkit;

namespace theme {

inline constexpr Colour565 kGround = Draw_Rgb565(0x12, 0x14, 0x18);      // behind everything
inline constexpr Colour565 kPanel = Draw_Rgb565(0x1A, 0x1D, 0x23);       // filled layouts, forms
inline constexpr Colour565 kWell = Draw_Rgb565(0x0C, 0x0E, 0x11);        // fields, lists, views
inline constexpr Colour565 kControl = Draw_Rgb565(0x2A, 0x2F, 0x38);     // button body (bottom of the gloss)
inline constexpr Colour565 kControlTop = Draw_Rgb565(0x3C, 0x43, 0x4F);  // top of the gloss
inline constexpr Colour565 kControlPressed = Draw_Rgb565(0x20, 0x24, 0x2B);
inline constexpr Colour565 kControlFlat = Draw_Rgb565(0x26, 0x2A, 0x32);
inline constexpr Colour565 kBorder = Draw_Rgb565(0x38, 0x3E, 0x48);
inline constexpr Colour565 kBorderStrong = Draw_Rgb565(0x4C, 0x54, 0x60);
inline constexpr Colour565 kText = Draw_Rgb565(0xDC, 0xE0, 0xE6);
inline constexpr Colour565 kTextDim = Draw_Rgb565(0x88, 0x90, 0x9C);
inline constexpr Colour565 kTextDisabled = Draw_Rgb565(0x54, 0x5A, 0x64);
inline constexpr Colour565 kAccent = Draw_Rgb565(0xD8, 0x5A, 0x48);  // warm red: focus, slider fill
inline constexpr Colour565 kAccentDim = Draw_Rgb565(0x7A, 0x36, 0x2E);
inline constexpr Colour565 kSelection = Draw_Rgb565(0x4A, 0x2A, 0x28);
inline constexpr Colour565 kShade = Draw_Rgb565(0x00, 0x00, 0x00);  // dimming behind a modal box
inline constexpr uint32_t kShadeAlpha = 150;                        // of 256

// The three tints of tinted icons: light, accent and a cool blue.
inline constexpr Colour565 kTint0 = kText;
inline constexpr Colour565 kTint1 = kAccent;
inline constexpr Colour565 kTint2 = Draw_Rgb565(0x5A, 0x8C, 0xC8);

// Histogram channels.
inline constexpr Colour565 kRed = Draw_Rgb565(0xD0, 0x50, 0x48);
inline constexpr Colour565 kGreen = Draw_Rgb565(0x58, 0xB0, 0x68);
inline constexpr Colour565 kBlue = Draw_Rgb565(0x50, 0x80, 0xD8);

}  // namespace theme

// Puts the theme's background and tints into the context.
void Theme_Apply(Toolkit* toolkit);

// Corner radius and spacing in pixels for a control of the given height.
int32_t Theme_Radius(int32_t controlHeight);
int32_t Theme_Gap(const Toolkit* toolkit);
