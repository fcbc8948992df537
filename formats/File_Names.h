// The file-name rules of opening and saving: which extensions are taken, the
// default save name, and the extension test they share.
#pragma once

#include <string>

// True when the text after the last "." equals `extension`, ignoring case;
// false when the name has no ".".
bool File_HasExtension(const char* name, const char* extension);

// Extensions the open dialog accepts: jpg jpeg png fits tiff tif crw bmp fts fit.
bool File_IsOpenableName(const char* name);
// Extensions the save dialog accepts: jpeg jps tiff png tif, and any name ending in ".jpg".
bool File_IsSaveableName(const char* name);

// The save dialog's initial name: "NewFile.tiff" when nothing was loaded or
// saved yet, else the current name with a FITS extension turned into TIFF.
std::string File_DefaultSaveName(const char* currentName);

enum class SaveFormat { kTiff, kJpeg, kPng };
// The writer for a name: jpg, jpeg, jps -> JPEG; png -> PNG; anything else -> TIFF.
SaveFormat File_SaveFormatFor(const char* name);

inline constexpr const char* kUnknownFileTypeTitle = "Unknown File Type";
inline constexpr const char* kUnknownFileTypeText =
    " Make sure image file is a FITS file, an uncompressed, IBM PC byte-order TIFF file, a JPEG file, or a "
    "PNG "
    "file.";
inline constexpr const char* kUnsupportedFileTypeTitle = "Unsupported File Type";
inline constexpr const char* kUnsupportedFileTypeText =
    "Pellucida saves 16-bit TIFF or 8-bit JPEG or PNG files.";
