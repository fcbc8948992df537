// pellucida-pack: builds the program's `resources` archive from folders of
// source files, and lets maintainers look inside one.
//
//   pellucida-pack pack -o resources <folder-or-file>...
//   pellucida-pack list <archive>
//   pellucida-pack extract <archive> <name> [<output file>]
//   pellucida-pack render <file.sqi | archive:name> <width> <height> <out.png>
//   [AutoFit|AutoFillOut|Stretch|Native]
//
// Folders are read recursively; each file becomes the entry named after the
// file itself (archive names have no folders).
#include "tools/pack/Pack_Write.h"
#include "ui/archive/Resources_Archive.h"
#include "ui/archive/Sqi_Decode.h"

#include <lodepng.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr const char* kUsage =
    "usage: pellucida-pack pack -o <archive> <folder-or-file>...\n"
    "       pellucida-pack list <archive>\n"
    "       pellucida-pack extract <archive> <name> [<output file>]\n"
    "       pellucida-pack render <file.sqi | archive:name> <width> <height> <out.png> "
    "[AutoFit|AutoFillOut|Stretch|Native]\n";

// The dark theme's window background, behind rendered icons.
constexpr uint32_t kRenderBackground = 0x202428;

bool ReadFile(const fs::path& path, std::vector<uint8_t>* data) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    data->assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return true;
}

bool WriteFile(const fs::path& path, const std::vector<uint8_t>& data) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(data.data()), static_cast<std::streamsize>(data.size()));
    return static_cast<bool>(out);
}

int Fail(const std::string& message) {
    std::fprintf(stderr, "pellucida-pack: %s\n", message.c_str());
    return 1;
}

int Pack(int argc, char** argv) {
    std::string output;
    std::vector<fs::path> inputs;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "-o") == 0 && i + 1 < argc)
            output = argv[++i];
        else
            inputs.emplace_back(argv[i]);
    }
    if (output.empty() || inputs.empty()) return Fail("pack needs -o <archive> and at least one input");
    std::vector<PackEntry> entries;
    auto add = [&](const fs::path& file) {
        PackEntry entry;
        entry.name = file.filename().string();
        if (!ReadFile(file, &entry.data)) return false;
        entries.push_back(std::move(entry));
        return true;
    };
    for (const fs::path& input : inputs) {
        std::error_code ec;
        if (fs::is_directory(input, ec)) {
            std::vector<fs::path> files;
            for (const auto& item : fs::recursive_directory_iterator(input, ec))
                if (item.is_regular_file()) files.push_back(item.path());
            std::sort(files.begin(), files.end());
            for (const fs::path& file : files)
                if (!add(file)) return Fail("cannot read " + file.string());
        } else if (!add(input)) {
            return Fail("cannot read " + input.string());
        }
    }
    std::vector<uint8_t> archive;
    std::string error;
    if (!Pack_Build(entries, &archive, &error)) return Fail(error);
    // Written beside and renamed, so a failed build never leaves half an archive.
    const fs::path temporary = output + ".partial";
    if (!WriteFile(temporary, archive)) return Fail("cannot write " + temporary.string());
    std::error_code ec;
    fs::rename(temporary, output, ec);
    if (ec) return Fail("cannot replace " + output + ": " + ec.message());
    return 0;
}

bool OpenArchive(const char* path, ResourceArchive* archive) {
    const int code = ResourceArchive_AddVolume(archive, path);
    if (code == kResourceOk) return true;
    std::fprintf(stderr, "pellucida-pack: %s is not a readable archive (code %d)\n", path, code);
    return false;
}

int List(const char* path) {
    ResourceArchive archive;
    if (!OpenArchive(path, &archive)) return 1;
    std::vector<ResourceRecordInfo> records;
    const int code = ResourceArchive_ListRecords(&archive, &records);
    std::printf("%5s  %4s  %10s  %s\n", "slot", "bkt", "bytes", "name");
    for (const ResourceRecordInfo& r : records)
        std::printf("%5u  %4u  %10u  %s\n", r.slot, Resources_Hash(r.name.c_str()) & (kResourceBuckets - 1),
                    r.dataLength, r.name.c_str());
    if (code != kResourceOk) return Fail("the slot walk stopped on a broken record");
    return 0;
}

int Extract(const char* path, const char* name, const char* output) {
    ResourceArchive archive;
    if (!OpenArchive(path, &archive)) return 1;
    const std::vector<uint8_t> data = ResourceArchive_LoadWhole(&archive, name);
    if (data.empty()) return Fail(std::string("no entry named ") + name + " (or it is empty)");
    if (!WriteFile(output ? output : name, data)) return Fail("cannot write the entry");
    return 0;
}

bool FillModeOf(const char* word, uint32_t* mode) {
    const char* names[] = {"AutoFit", "AutoFillOut", "Stretch", "Native"};
    for (uint32_t i = 0; i < 4; ++i)
        if (std::strcmp(word, names[i]) == 0) {
            *mode = i;
            return true;
        }
    return false;
}

int Render(int argc, char** argv) {
    if (argc < 4) return Fail("render needs a source, a width, a height and an output file");
    std::vector<uint8_t> sqi;
    const std::string source = argv[0];
    const size_t colon = source.rfind(':');
    if (colon != std::string::npos && colon > 0 && fs::exists(source.substr(0, colon)) &&
        !fs::exists(source)) {
        ResourceArchive archive;
        if (!OpenArchive(source.substr(0, colon).c_str(), &archive)) return 1;
        sqi = ResourceArchive_LoadWhole(&archive, source.substr(colon + 1).c_str());
    } else if (!ReadFile(source, &sqi)) {
        return Fail("cannot read " + source);
    }
    const int width = std::atoi(argv[1]);
    const int height = std::atoi(argv[2]);
    if (width < 1 || height < 1 || width > 8192 || height > 8192)
        return Fail("the size must be 1 to 8192 pixels");
    uint32_t fill = 2;  // Stretch
    if (argc > 4 && !FillModeOf(argv[4], &fill)) return Fail(std::string("unknown fill mode ") + argv[4]);

    std::vector<uint32_t> pixels(static_cast<size_t>(width) * height, kRenderBackground);
    SqiTarget target;
    target.pixels = pixels.data();
    target.pixelsPerRow = static_cast<uint32_t>(width);
    target.framebufferWidth = static_cast<uint32_t>(width);
    target.framebufferHeight = static_cast<uint32_t>(height);
    target.width = width;
    target.height = height;
    target.fillMode = fill;
    // The dark theme's tints, for tinted icons.
    target.tint[0] = 0xFFFF;
    target.tint[1] = 0x5D7F;
    target.tint[2] = 0xFD20;
    if (!Sqi_Draw(sqi.data(), sqi.size(), target)) return Fail("not a drawable .sqi");
    std::vector<uint8_t> rgba(pixels.size() * 4);
    for (size_t i = 0; i < pixels.size(); ++i) {
        rgba[4 * i] = static_cast<uint8_t>(pixels[i] >> 16);
        rgba[4 * i + 1] = static_cast<uint8_t>(pixels[i] >> 8);
        rgba[4 * i + 2] = static_cast<uint8_t>(pixels[i]);
        rgba[4 * i + 3] = 255;
    }
    if (lodepng::encode(argv[3], rgba, static_cast<unsigned>(width), static_cast<unsigned>(height)) != 0)
        return Fail(std::string("cannot write ") + argv[3]);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    const std::string command = argv[1];
    if (command == "pack") return Pack(argc - 2, argv + 2);
    if (command == "list" && argc == 3) return List(argv[2]);
    if (command == "extract" && (argc == 4 || argc == 5))
        return Extract(argv[2], argv[3], argc == 5 ? argv[4] : nullptr);
    if (command == "render") return Render(argc - 2, argv + 2);
    std::fputs(kUsage, stderr);
    return 2;
}
