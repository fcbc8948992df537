// The save flow: the writer chosen by the name's extension, and the log lines
// of a save. A failed save is logged, never shown in a box, and the file it
// would have replaced is left as it was.
#pragma once

struct ImageBuffer;

// Writes the image; true on success. Logs "File saved [" in every case, after
// the failure line. A caller that shows the wait cursor holds a
// CursorWaitScope around the call.
bool File_SaveImageAs(const char* name, const ImageBuffer* image);
