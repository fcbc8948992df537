// File names are UTF-8 text throughout the program. std::filesystem reads a
// char string in the system's code page on Windows, which is not UTF-8 there,
// so a folder or file named in most languages (a user folder "José", an image
// "Orion_Ø.fits") would be missed; these two convert explicitly. Identity on
// Linux.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

inline std::filesystem::path Host_Path(std::string_view utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

inline std::string Host_PathText(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}
