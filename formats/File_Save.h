// The save flow: the writer chosen by the name's extension, and the log lines
// of a save. A failed save is logged, never shown in a box, and the file it
// would have replaced is left as it was.
#pragma once

struct ImageBuffer;

// Writes the image; true on success. `application` non-null shows the wait
// cursor meanwhile. Logs "File saved [" in every case, after the failure line.
bool File_SaveImageAs(void* application, const char* name, const ImageBuffer* image);
