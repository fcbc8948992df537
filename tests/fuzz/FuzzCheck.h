// What every fuzz target asserts about an image a reader accepted: a sane
// header, the planes it promises, and every sample within 0..maxValue. A
// violation traps, so the fuzzer keeps the input as a crasher. Also the
// targets' shared steps: a folder of their own, the input written to a file,
// and the whole body of a reader's target.
#pragma once

#include "image/Image.h"

#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <string>

// A folder of this process's own for the files a target reads back.
inline std::string Fuzz_TempFolder(const char* name) {
    const std::filesystem::path dir =
        std::filesystem::temp_directory_path() /
        ("pellucida-fuzz-" + std::string(name) + "-" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    return dir.string();
}

// Writes a target's input to `path`; false when the file cannot be created.
inline bool Fuzz_WriteFile(const std::string& path, const uint8_t* data, size_t size) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) return false;
    if (size) std::fwrite(data, 1, size, file);  // an empty input may come without bytes
    std::fclose(file);
    return true;
}

inline void Fuzz_CheckImage(const ImageBuffer* image) {
    if (!image) return;
    if (image->width < 1 || image->height < 1 || image->stride != image->width) __builtin_trap();
    if (image->bitDepth < 1 || image->bitDepth > 32) __builtin_trap();
    if (image->maxValue != static_cast<int64_t>((uint64_t{1} << image->bitDepth) - 1)) __builtin_trap();
    if (!image->red || !image->green || !image->blue) __builtin_trap();
    if ((image->attachment == nullptr) != (image->attachmentSize == 0)) __builtin_trap();
    const size_t n = static_cast<size_t>(image->width) * static_cast<size_t>(image->height);
    auto outOfRange = [image](int64_t v) { return v < 0 || v > image->maxValue; };
    for (const int64_t* plane : {image->red, image->green, image->blue, image->alpha})
        if (plane && std::any_of(plane, plane + n, outOfRange)) __builtin_trap();
    const int64_t* red = image->red;
    if (image->mono && (!std::equal(red, red + n, image->green) || !std::equal(red, red + n, image->blue)))
        __builtin_trap();
}

// The whole of a reader's target: the input read from memory, the image checked.
inline int Fuzz_Reader(ImageBuffer* (*read)(const uint8_t*, size_t), const uint8_t* data, size_t size) {
    ImagePtr image(read(data, size));
    Fuzz_CheckImage(image.get());
    return 0;
}
