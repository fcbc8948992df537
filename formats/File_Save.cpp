#include "formats/File_Save.h"

#include "formats/File_Names.h"
#include "formats/Jpeg_Write.h"
#include "formats/Png_Write.h"
#include "formats/Tiff_Write.h"
#include "host/Shell_Log.h"

bool File_SaveImageAs(const char* name, const ImageBuffer* image) {
    int written = 0;
    switch (File_SaveFormatFor(name)) {
        case SaveFormat::kJpeg:
            written = Jpeg_Write(image, name);
            break;
        case SaveFormat::kPng:
            written = Png_Write(image, name);
            break;
        case SaveFormat::kTiff:
            written = Tiff_Write(image, name);
            break;
    }
    // Every writer's failure is logged, not only the TIFF writer's: a user must
    // learn that a JPEG or PNG was not written as much as a TIFF.
    if (!written)
        Shell_Logf(
            "Could not save file [%s] for write - check permissions for folder, or check whether another "
            "application has this file locked.\n",
            name);
    Shell_Logf("File saved [%s].\n", name);
    return written != 0;
}
