// What the sample folder's expected.json says each file must give: read the
// file as a list of [file, reader, result, notes] string quadruples and decode
// the result texts ("127x64 colour ...", "16x16 colour depth 16 +alpha",
// "20x100 mode I", "refused").
#pragma once

#include "image/Image.h"
#include "support/Files.h"
#include "support/TestData.h"

#include <cstdio>
#include <regex>
#include <string>
#include <tuple>
#include <vector>

struct ManifestEntry {
    std::string file;
    std::string reader;
    std::string result;
    std::string notes;  // the fourth text: for a FITS file, the first 16 hex digits of its samples' SHA-256
    bool refused = false;
    int width = 0;
    int height = 0;
    bool mono = false;
    int depth = -1;  // -1 when the result does not state it
    bool alpha = false;
};

// Entries of one reader ("TIFF", "PNG", ...), or all when `reader` is empty.
// Empty when the sample folder is absent.
inline std::vector<ManifestEntry> Manifest_Entries(const std::string& reader) {
    std::vector<ManifestEntry> entries;
    const std::string path = TestData_Path("expected.json");
    const std::vector<uint8_t> bytes = path.empty() ? std::vector<uint8_t>() : ReadFileBytes(path);
    const std::string json(bytes.begin(), bytes.end());
    std::vector<std::string> strings;  // every string of the file, in order; none holds a quote
    const std::regex text("\"([^\"]*)\"");
    for (auto it = std::sregex_iterator(json.begin(), json.end(), text); it != std::sregex_iterator(); ++it)
        strings.push_back((*it)[1]);
    auto has = [](const std::string& result, const char* word) {
        return std::regex_search(result, std::regex(std::string("(^| )") + word + "($| |,)"));
    };
    for (size_t i = 0; i + 3 < strings.size(); i += 4) {
        ManifestEntry e{strings[i], strings[i + 1], strings[i + 2], strings[i + 3]};
        if (!reader.empty() && e.reader != reader) continue;
        e.refused = e.result.rfind("refused", 0) == 0;
        if (!e.refused) std::sscanf(e.result.c_str(), "%dx%d", &e.width, &e.height);
        e.mono = has(e.result, "mono") || has(e.result, "mode L") || has(e.result, "mode I");
        if (const size_t at = e.result.find("depth "); at != std::string::npos)
            e.depth = std::atoi(e.result.c_str() + at + 6);
        e.alpha = e.result.find("+alpha") != std::string::npos || has(e.result, "mode RGBA");
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
        // Width, height, stride, grey, alpha, depth (when stated) and maximum.
        EXPECT_EQ(std::tuple(image->width, image->height, image->stride, image->mono, image->alpha != nullptr,
                             image->bitDepth, image->maxValue),
                  std::tuple(e.width, e.height, e.width, e.mono ? 1 : 0, e.alpha,
                             e.depth > 0 ? e.depth : image->bitDepth,
                             int64_t((uint64_t{1} << image->bitDepth) - 1)));
        check(e, *image);
    }
}
