// The sample folder's expected.json: what the program must make of each file
// (reader, "WxH ..." or "refused", and for FITS the SHA-256 prefix of the
// 30-bit samples as little-endian int64 in (3, height, width) order).
#pragma once

#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

struct ExpectedFile {
    std::string path;    // relative to the data folder
    std::string format;  // "FITS", "TIFF", ...
    std::string result;  // "refused" or "WxH ..."
    std::string sha;     // FITS only
    int width = 0, height = 0;
    bool refused() const { return result == "refused"; }
};

// Each entry is a list of four strings; the file holds nothing else.
inline std::vector<ExpectedFile> ExpectedData_Load(const std::string& jsonPath) {
    std::ifstream in(jsonPath);
    std::stringstream text;
    text << in.rdbuf();
    std::string s = text.str();
    std::vector<ExpectedFile> files;
    static const std::regex entry(
        R"re(\[\s*"([^"]*)"\s*,\s*"([^"]*)"\s*,\s*"([^"]*)"\s*,\s*"([^"]*)"\s*\])re");
    for (auto it = std::sregex_iterator(s.begin(), s.end(), entry); it != std::sregex_iterator(); ++it) {
        ExpectedFile f{(*it)[1], (*it)[2], (*it)[3], (*it)[4]};
        std::sscanf(f.result.c_str(), "%dx%d", &f.width, &f.height);
        files.push_back(f);
    }
    return files;
}
