// The stereo module's exports: a stereo viewer and a VR viewer, each one HTML
// page with its pictures inside as base64 JPEG text (taken from templates in
// the resource archive), and the 3D photo pair (the image and its depth map as
// two JPEG files). A wrong extension or a missing template ends an export
// quietly; the pages still log their line where the design says so.
#pragma once

#include "image/Image.h"
#include "modules/stereo/Stereo_Kernel.h"

#include <string>

struct Toolkit;

struct ExportSource {
    const ImageBuffer* image = nullptr;  // the working image
    const ImageBuffer* depth = nullptr;  // the stereo module's depth map; null when it has none
    StereoSettings settings;             // the views of the VR page are made with these
    Toolkit* ui = nullptr;               // the resource archive: the templates and the badge
    std::string parameters;              // the module's parameter block, logged before an export's line
};

// Each returns 0, as a dialog's handler does, and shows the wait cursor while it works.
int Export_StereoHtml(const char* name, const ExportSource& source);
int Export_VrHtml(const char* name, const ExportSource& source);
int Export_Facebook3D(const char* name, const ExportSource& source);

// "scene.jpeg" gives "scene_depth.jpg": the extension from the last "." replaced.
std::string Export_DepthName(const char* name);
// A JPEG at quality 85 of the image as base64 text, made through the temporary
// file kExportTempName in the program's folder (the state folder when that is
// not writable), which is removed again. Empty when it could not be written.
std::string Export_JpegBase64(const ImageBuffer* image);
// The VR page's canvas for one view (Export_VrView): 4s x 2s, the view with its
// top-left corner at (2s - width / 2, s / 2), the badge (null: none) centred
// on the left and the right edge at the view's middle, black elsewhere.
ImagePtr Export_VrCanvas(const ImageBuffer* view, int32_t s, const ImageBuffer* badge);
// The base view size of the VR page: the view's longer side, at most kExportVrMaxView.
int32_t Export_VrBaseSize(const ImageBuffer* image);

inline constexpr const char* kExportTempName = "_QVTMP.jpg";
inline constexpr const char* kStereoTemplate = "stereoviewermin.html";
inline constexpr const char* kVrTemplate = "vrviewermin.html";
inline constexpr const char* kVrBadge = "madewithpellucidaurlbadge.png";
inline constexpr const char* kStereoImageMark = "pellucidaimage.jpg";
inline constexpr const char* kStereoDepthMark = "pellucidadepthmap.jpg";
inline constexpr const char* kVrLeftMark = "pellucida360left.jpg";
inline constexpr const char* kVrRightMark = "pellucida360right.jpg";
// The 360 degree canvas is 4 x 2 base sizes; larger views are scaled down to
// this so that the page stays a size a browser and a headset handle.
inline constexpr int32_t kExportVrMaxView = 1024;
