// The tracking store: earlier states of the image kept on disk in slot files,
// for noise tracking and undo. A slot (a, b) is the file "QV" + ('0' + a) +
// ('0' + b) + ".trk" in the program's data folder; it holds either a full
// record (header, then the red, green and blue planes as runs of LZ4 blocks of
// at most 8 MiB each) or a link naming another slot's first number.
//
// A slot is replaced only once its new contents are completely on disk, so a
// failed write never costs the state the slot held before.
#pragma once

#include "image/Image.h"

#include <cstdint>
#include <string>

// Full path of slot (a, b). A number above 9 gives a non-digit character in
// the name, as the naming rule has it.
std::string Tracking_SlotPath(int a, int b);

// Stores `image` (its red, green and blue planes) as slot (a, b). With
// `compose`, the planes are stored as Y, B - Y, R - Y: the image is converted
// in place for the write and converted back afterwards, clamped to
// 0..maxValue, so green may lose a step or two to the truncation of Y.
// Failures are shown to the user; returns false after showing one.
bool Tracking_WriteSlot(int a, int b, ImageBuffer* image, bool compose);

// Reads slot (a, b), following link records. Null when the slot is missing
// (said on the console), holds no image, or is truncated or malformed. The
// caller frees the result with Image_Free.
ImageBuffer* Tracking_ReadSlot(int a, int b, bool compose);

// The slot's first word: the first number of the slot it links to, or 0 for a
// full record or an empty or missing file.
uint32_t Tracking_ReadLink(int a, int b);

// Preparing the store at start-up: removes the files (a, 0) to (a, 9) an
// earlier run left, then creates (a, 0) empty; a folder that refuses it is
// reported to the user (false).
void Tracking_ClearSlots(int a);
bool Tracking_CreateSlot(int a);

// Makes slot (a, b) a link to slot (target, b): a 4-byte file holding
// `target`. Target 0 cannot be named (0 marks a full record) and is refused.
// Failures are shown to the user; returns false after showing one.
bool Tracking_WriteLink(int a, int b, uint32_t target);
