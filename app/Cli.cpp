// The command line: `info` and `convert` (see kHelp). Every user-facing text
// is the load and save flow's own.
#include "app/Cli.h"

#include "app/Shell_Log.h"
#include "formats/File_Load.h"
#include "formats/File_Names.h"
#include "formats/File_Save.h"
#include "formats/Npy_Write.h"
#include "host/Host.h"
#include "image/Image.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr const char* kHelp =
    "Usage: pellucida-cli COMMAND [ARGUMENTS]\n"
    "\n"
    "Commands:\n"
    "  info FILE...       One line per file: the reader that took it, width, height, bit depth as\n"
    "                     read, whether it is mono, whether it has an alpha plane, and the box inside\n"
    "                     any stacking-artefact border (left,top,right,bottom; right and bottom are\n"
    "                     exclusive), with artefacts=yes when a border was found.\n"
    "  convert IN OUT     Loads IN as the program does (any supported format, raised to the working\n"
    "                     30 bits, dataset answered \"Linear\") and saves it as OUT. The writer follows\n"
    "                     OUT's extension: .jpg/.jpeg/.jps JPEG (quality 85), .png 8-bit PNG, .npy the\n"
    "                     exact 30-bit samples as a NumPy int64 array of shape (3, height, width), and\n"
    "                     anything else 16-bit TIFF. An existing OUT is replaced only when the new file\n"
    "                     was written completely.\n"
    "  help               This text.\n"
    "\n"
    "Formats read: FITS, uncompressed TIFF, PNG, baseline JPEG, 24/32-bit BMP and raw sensor frames\n"
    "recognised by their file size. Steps are logged to Pellucida.log (beside the program when its\n"
    "folder is writable, else in $XDG_STATE_HOME/pellucida).\n"
    "\n"
    "Exit status: 0 success, 1 unreadable input or failed write, 2 wrong usage, 130 cancelled.\n";

std::atomic<bool> g_cancelled{false};

void OnInterrupt(int) { g_cancelled = true; }

int Usage(const char* why) {
    std::fprintf(stderr, "pellucida-cli: %s\n\n%s", why, kHelp);
    return 2;
}

void ReportUnreadable(const char* path) { std::fprintf(stderr, "%s: %s\n", path, kLoadFailedText); }

int Info(int count, char** paths) {
    int status = 0;
    for (int i = 0; i < count; ++i) {
        LoadInfo info;
        ImageBuffer* image = File_ReadAnyFormat(paths[i], &info.reader);
        if (!image || !File_PrepareLoaded(image, &info)) {
            ReportUnreadable(paths[i]);
            status = 1;
            continue;
        }
        std::printf("%s: reader=%s width=%d height=%d depth=%d mono=%d alpha=%d box=%d,%d,%d,%d artefacts=%s\n",
                    paths[i], File_ReaderName(info.reader), image->width, image->height, info.bitDepthAsRead,
                    image->mono ? 1 : 0, info.alphaAsRead ? 1 : 0, info.box.left, info.box.top, info.box.right,
                    info.box.bottom, info.artefacts ? "yes" : "no");
        Image_Free(image);
    }
    return status;
}

int Convert(const char* in, const char* out) {
    LoadInfo info;
    ImagePtr image(File_LoadImageData(nullptr, in, &info));
    if (!image) {
        ReportUnreadable(in);
        return 1;
    }
    // The batch answers the load flow's questions with their defaults: the
    // transparent values are used as they are, and the data are linear.
    if (info.artefacts) std::fprintf(stderr, "%s: %s\n", kArtefactsTitle, kArtefactsText);
    if (info.reader != FileReaderKind::kJpeg) File_LogDatasetAnswer(DatasetAnswer::kLinear, info.grey);
    File_LogImageSize(image.get());

    if (g_cancelled) {
        std::fputs("pellucida-cli: cancelled; nothing was written\n", stderr);
        return 130;
    }
    bool written;
    if (File_HasExtension(out, "npy")) {
        written = Npy_Write(image.get(), out) != 0;
        Shell_Logf("File saved [%s].\n", out);
    } else {
        written = File_SaveImageAs(nullptr, out, image.get());
    }
    if (!written) {
        std::fprintf(stderr,
                     "Could not save file [%s] for write - check permissions for folder, or check whether another "
                     "application has this file locked.\n",
                     out);
        return 1;
    }
    return 0;
}

}  // namespace

int Cli_Run(int argc, char** argv) {
    // No window: messages such as "Out of memory" go to standard error.
    Host_SelectBackend("headless");
    std::signal(SIGINT, OnInterrupt);
    g_cancelled = false;

    if (argc < 2) return Usage("no command given");
    std::string command = argv[1];
    if (command == "help" || command == "--help" || command == "-h") {
        std::fputs(kHelp, stdout);
        return 0;
    }
    if (command == "info") {
        if (argc < 3) return Usage("info needs at least one FILE");
        return Info(argc - 2, argv + 2);
    }
    if (command == "convert") {
        if (argc != 4) return Usage("convert needs IN and OUT");
        return Convert(argv[2], argv[3]);
    }
    return Usage(("unknown command \"" + command + "\"").c_str());
}
