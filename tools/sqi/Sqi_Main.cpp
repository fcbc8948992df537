// pellucida-sqi: encodes PNG pictures as .sqi icons.
//
//   pellucida-sqi [--tinted] <in.png> <out.sqi>
#include "tools/sqi/Sqi_Encode.h"

#include <lodepng.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

int main(int argc, char** argv) {
    bool tinted = false;
    const char* input = nullptr;
    const char* output = nullptr;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--tinted") == 0)
            tinted = true;
        else if (!input)
            input = argv[i];
        else if (!output)
            output = argv[i];
    }
    if (!input || !output) {
        std::fputs("usage: pellucida-sqi [--tinted] <in.png> <out.sqi>\n", stderr);
        return 2;
    }
    SqiSource source;
    unsigned w = 0, h = 0;
    if (const unsigned error = lodepng::decode(source.rgba, w, h, input)) {
        std::fprintf(stderr, "pellucida-sqi: %s: %s\n", input, lodepng_error_text(error));
        return 1;
    }
    if (w > 65535 || h > 65535) {
        std::fprintf(stderr, "pellucida-sqi: %s is larger than an icon can be\n", input);
        return 1;
    }
    source.width = w;
    source.height = h;
    const std::vector<uint8_t> file = Sqi_Encode(source, tinted);
    std::ofstream out(output, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    if (!out) {
        std::fprintf(stderr, "pellucida-sqi: cannot write %s\n", output);
        return 1;
    }
    return 0;
}
