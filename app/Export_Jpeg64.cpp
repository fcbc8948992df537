// The pieces the exports share: the depth map's file name, and a picture as
// base64 JPEG text by way of the temporary file.
#include "app/Export.h"

#include "formats/Base64.h"
#include "formats/File_ReadAll.h"
#include "formats/Jpeg_Write.h"
#include "host/Host_Os.h"

#include <cstdio>

std::string Export_DepthName(const char* name) {
    std::string depth = name;
    if (const size_t dot = depth.rfind('.'); dot != std::string::npos) depth.resize(dot);
    return depth + "_depth.jpg";
}

std::string Export_JpegBase64(const ImageBuffer* image) {
    const std::string temp = Host_GetDataDir() + kExportTempName;
    FileBytes bytes;
    const bool read = Jpeg_Write(image, temp.c_str()) == 1 && File_ReadAll(temp.c_str(), &bytes);
    std::remove(temp.c_str());
    if (!read) return {};
    return Base64_Encode({bytes.data.get(), bytes.size});
}
