// What the sample folder's expected.json says each file must give: read the
// file as a list of [file, reader, result, notes] string quadruples and decode
// the result texts ("127x64 colour ...", "16x16 colour depth 16 +alpha",
// "20x100 mode I", "refused").
#pragma once

#include "image/Image.h"
#include "support/TestData.h"

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

struct ManifestEntry {
    std::string file;
    std::string reader;
    std::string result;
    bool refused = false;
    int width = 0;
    int height = 0;
    bool mono = false;
    int depth = -1;  // -1 when the result does not state it
    bool alpha = false;
    bool isFloat = false;
    std::string notes;  // the fourth text: for a FITS file, the first 16 hex digits of its samples' SHA-256
};

inline bool Manifest_HasWord(const std::string& text, const std::string& word) {
    size_t at = text.find(word);
    while (at != std::string::npos) {
        const size_t end = at + word.size();
        const bool startOk = at == 0 || text[at - 1] == ' ';
        const bool endOk = end == text.size() || text[end] == ' ' || text[end] == ',';
        if (startOk && endOk) return true;
        at = text.find(word, at + 1);
    }
    return false;
}

// Entries of one reader ("TIFF", "PNG", ...), or all when `reader` is empty.
// Empty when the sample folder is absent.
inline std::vector<ManifestEntry> Manifest_Entries(const std::string& reader) {
    std::vector<ManifestEntry> entries;
    const std::string path = TestData_Path("expected.json");
    if (path.empty()) return entries;
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    const std::string json = text.str();
    std::vector<std::string> strings;
    for (size_t i = 0; i < json.size(); ++i) {
        if (json[i] != '"') continue;
        std::string s;
        for (++i; i < json.size() && json[i] != '"'; ++i) {
            if (json[i] == '\\' && i + 1 < json.size()) ++i;
            s += json[i];
        }
        strings.push_back(s);
    }
    for (size_t i = 0; i + 3 < strings.size(); i += 4) {
        ManifestEntry e;
        e.file = strings[i];
        e.reader = strings[i + 1];
        e.result = strings[i + 2];
        e.notes = strings[i + 3];
        if (!reader.empty() && e.reader != reader) continue;
        e.refused = e.result.rfind("refused", 0) == 0;
        if (!e.refused) std::sscanf(e.result.c_str(), "%dx%d", &e.width, &e.height);
        e.mono = Manifest_HasWord(e.result, "mono") || Manifest_HasWord(e.result, "mode L") ||
                 Manifest_HasWord(e.result, "mode I");
        if (const size_t at = e.result.find("depth "); at != std::string::npos)
            e.depth = std::atoi(e.result.c_str() + at + 6);
        e.alpha = e.result.find("+alpha") != std::string::npos || Manifest_HasWord(e.result, "mode RGBA");
        e.isFloat = Manifest_HasWord(e.result, "float");
        entries.push_back(e);
    }
    return entries;
}

// Reads every sample of one reader (all when `reader` is empty) with `read`
// (path, entry -> image) and holds it to the manifest: a refused file gives no
// image, any other one the stated size, grey or colour, alpha and depth (when
// stated), with the maximum its depth gives; `check` (entry, image) examines
// it further.
template <class Read, class Check>
void Manifest_CheckEveryRead(const std::string& reader, size_t atLeast, Read read, Check check) {
    const std::vector<ManifestEntry> entries = Manifest_Entries(reader);
    ASSERT_GE(entries.size(), atLeast);
    for (const ManifestEntry& e : entries) {
        SCOPED_TRACE(e.file + ": " + e.result);
        const std::string path = TestData_Path(e.file);
        ASSERT_FALSE(path.empty());
        ImagePtr image(read(path, e));
        if (e.refused) {
            EXPECT_EQ(image, nullptr);
            continue;
        }
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(image->width, e.width);
        EXPECT_EQ(image->height, e.height);
        EXPECT_EQ(image->stride, e.width);
        EXPECT_EQ(image->mono, e.mono ? 1 : 0);
        EXPECT_EQ(image->alpha != nullptr, e.alpha);
        EXPECT_EQ(image->bitDepth, e.depth > 0 ? e.depth : image->bitDepth);
        EXPECT_EQ(image->maxValue, int64_t((uint64_t{1} << image->bitDepth) - 1));
        check(e, *image);
    }
}
