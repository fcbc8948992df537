// The 3D photo pair: the working image and its depth map, two JPEG files
// side by side in one folder, as photo-sharing sites take them.
#include "app/Export.h"

#include "formats/File_Names.h"
#include "formats/Jpeg_Write.h"
#include "host/CursorWaitScope.h"
#include "host/Shell_Log.h"

namespace {

constexpr const char* kLogLine = "Facebook 3D image set exported [";

// A name ending in ".jpg" or with the extension "jpeg", either without regard to case.
bool IsJpegName(const char* name) {
    return File_HasExtension(name, "jpg") || File_HasExtension(name, "jpeg");
}

}  // namespace

int Export_Facebook3D(const char* name, const ExportSource& source) {
    CursorWaitScope wait;
    if (!name || !IsJpegName(name) || !source.image || !source.depth) return 0;
    Jpeg_Write(source.depth, Export_DepthName(name).c_str());
    Jpeg_Write(source.image, name);
    Shell_Logf("%s%s%s].\n", source.parameters.c_str(), kLogLine, name);
    return 0;
}
