// The command line: `info`, `convert`, `process` and `replay` (see kHelp). Every user-facing text
// is the load and save flow's own.
#include "app/Cli.h"

#include "app/Replay_Log.h"
#include "formats/File_Load.h"
#include "formats/File_LoadQuestions.h"
#include "formats/File_Names.h"
#include "formats/File_ReadAll.h"
#include "formats/File_Save.h"
#include "formats/Npy_Write.h"
#include "host/Host.h"
#include "host/Shell_Log.h"
#include "image/Image.h"
#include "modules/Pipeline.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace {

constexpr const char* kHelpHead =
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
    "  process IN -o OUT [LOAD ANSWER]... [STEP]...\n"
    "                     Loads IN, answers the questions the load raises, runs the steps in the\n"
    "                     order given, and saves OUT as convert does. Progress goes to standard\n"
    "                     output; Ctrl-C stops the run and no output file is written.\n"
    "  replay LOG IN -o OUT\n"
    "                     Gives IN the treatment a processing log records: the dataset answer and\n"
    "                     the steps kept after the log's last \"File loaded [\" line, whether kept in\n"
    "                     the window or run by process, then saves OUT as process does. A line it\n"
    "                     cannot read stops it (status 2, naming the line) before OUT is written.\n"
    "  help               This text.\n"
    "\n"
    "Load answers:\n"
    "  --dataset=linear|osc|srgb\n"
    "                     \"Type of dataset?\" (default linear). osc: linear, from a colour camera\n"
    "                     with a Bayer matrix, not white balanced, which balances the colour: the\n"
    "                     channels' sky backgrounds are matched and the stars and object together\n"
    "                     made white. srgb: non-linear sRGB source.\n"
    "  --reverse=yes|no   Reverse the sRGB stretch of a JPEG, or of data answered srgb (default no).\n"
    "  --gaps=interpolate|keep\n"
    "                     Transparent pixels: neutral placeholders, or their values as they are\n"
    "                     (default keep).\n"
    "\n"
    "Steps (values are the modules' own slider positions, so a processing log can be replayed):\n";

constexpr const char* kHelpTail =
    "\n"
    "Formats read: FITS, uncompressed TIFF, PNG, baseline JPEG, 24/32-bit BMP and raw sensor frames\n"
    "recognised by their file size. Steps are logged to Pellucida.log (beside the program when its\n"
    "folder is writable, else in $XDG_STATE_HOME/pellucida).\n"
    "\n"
    "Exit status: 0 success, 1 unreadable input or failed write, 2 wrong usage, 130 cancelled.\n";

std::string Help() {
    return kHelpHead + Pipeline_Help() + kHelpTail;
}

std::atomic<bool> g_cancelled{false};

// The first Ctrl-C asks the running step to stop; a second one ends the
// program at once.
void OnInterrupt(int) {
    g_cancelled = true;
    std::signal(SIGINT, SIG_DFL);
}

int Usage(const char* why) {
    std::fprintf(stderr, "pellucida-cli: %s\n\n%s", why, Help().c_str());
    return 2;
}

void ReportUnreadable(const char* path) {
    std::fprintf(stderr, "%s: %s\n", path, kLoadFailedText);
}

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
        std::printf(
            "%s: reader=%s width=%d height=%d depth=%d mono=%d alpha=%d box=%d,%d,%d,%d artefacts=%s\n",
            paths[i], File_ReaderName(info.reader), image->width, image->height, info.bitDepthAsRead,
            image->mono ? 1 : 0, info.alphaAsRead ? 1 : 0, info.box.left, info.box.top, info.box.right,
            info.box.bottom, info.artefacts ? "yes" : "no");
        Image_Free(image);
    }
    return status;
}

void PrintProgress(void* context, const char* stage, int percent) {
    auto* last = static_cast<std::string*>(context);
    std::string now = std::string(stage) + std::to_string(percent);
    if (now == *last) return;
    *last = now;
    std::printf("%s [%3d%%]\r", stage, percent);
    std::fflush(stdout);
}

// The command line's answers to the load questions.
struct LoadChoices {
    DatasetAnswer dataset = DatasetAnswer::kLinear;
    bool reverse = false;
    bool interpolateGaps = false;
};

void AnswerLoadQuestions(ImageBuffer* image, const LoadInfo& info, const LoadChoices& choices) {
    LoadAnswers answers;
    LoadQuestion question;
    while (File_NextLoadQuestion(info, answers, &question)) {
        int button = 0;
        switch (question.id) {
            case LoadQuestionId::kDataGaps:
                button = choices.interpolateGaps ? 0 : 1;
                break;
            case LoadQuestionId::kArtefacts:
                std::fprintf(stderr, "%s: %s\n", question.title, question.text);
                break;
            case LoadQuestionId::kDataset:
                button = File_DatasetButton(choices.dataset, info.grey);
                break;
            case LoadQuestionId::kReverseStretch:
            case LoadQuestionId::kReverseSrgb:
                button = choices.reverse ? 0 : 1;
                break;
        }
        File_AnswerLoadQuestion(&answers, question.id, button);
    }
    File_ApplyLoadAnswers(image, info, answers);
}

// The steps of a run: given whole on the command line, or read from a log,
// whose size-dependent values are read against the image at their step.
struct StepSource {
    size_t count = 0;
    // False (with the reason on standard error) stops the run: status 2.
    std::function<bool(size_t index, const ImageBuffer& image, PipelineStep* step)> at;
};

int Process(const char* in, const char* out, const StepSource& steps, const LoadChoices& choices) {
    LoadInfo info;
    ImageBuffer* loaded = File_LoadImageData(in, &info);
    if (!loaded) {
        ReportUnreadable(in);
        return 1;
    }
    ImageBuffer* image = loaded;
    ImageBuffer* mask = nullptr;  // the batch has no mask
    AnswerLoadQuestions(image, info, choices);

    std::string lastProgress;
    KernelControl control;
    control.cancel = &g_cancelled;
    control.progress = PrintProgress;
    control.context = &lastProgress;
    bool cancelled = g_cancelled;
    bool refused = false;
    for (size_t i = 0; i < steps.count && !cancelled; ++i) {
        PipelineStep step;
        if (!steps.at(i, *image, &step)) {
            refused = true;
            break;
        }
        std::string block;
        if (!Pipeline_RunStep(step, &image, &mask, &control, &block)) {
            cancelled = true;
            break;
        }
        if (!lastProgress.empty()) std::fputc('\n', stdout);
        lastProgress.clear();
        if (!block.empty()) Shell_Log(block.c_str());
    }
    ImagePtr result(image);
    Image_Free(mask);
    if (refused) return 2;
    if (cancelled || g_cancelled) {
        std::fputs("\npellucida-cli: cancelled; nothing was written\n", stderr);
        return 130;
    }
    bool written;
    if (File_HasExtension(out, "npy")) {
        written = Npy_Write(result.get(), out) != 0;
        Shell_Logf("File saved [%s].\n", out);
    } else {
        written = File_SaveImageAs(out, result.get());
    }
    if (!written) {
        std::fprintf(
            stderr,
            "Could not save file [%s] for write - check permissions for folder, or check whether another "
            "application has this file locked.\n",
            out);
        return 1;
    }
    return 0;
}

StepSource Given(const std::vector<PipelineStep>& steps) {
    return {steps.size(), [&steps](size_t i, const ImageBuffer&, PipelineStep* step) {
                *step = steps[i];
                return true;
            }};
}

// "-o FILE", "--output FILE" or "--output=FILE" at argv[*i], which process and
// replay both take: the name goes to *out and *i past it.
enum class OutputArg { kNone, kTaken, kMissing };
OutputArg TakeOutput(int argc, char** argv, int* i, const char** out) {
    const std::string arg = argv[*i];
    if (arg == "-o" || arg == "--output") {
        if (++*i >= argc) return OutputArg::kMissing;
        *out = argv[*i];
        return OutputArg::kTaken;
    }
    if (arg.rfind("--output=", 0) != 0) return OutputArg::kNone;
    *out = argv[*i] + 9;
    return OutputArg::kTaken;
}

int ProcessCommand(int argc, char** argv) {
    const char* in = nullptr;
    const char* out = nullptr;
    LoadChoices choices;
    std::vector<PipelineStep> steps;
    for (int i = 0; i < argc; ++i) {
        std::string arg = argv[i];
        if (const OutputArg o = TakeOutput(argc, argv, &i, &out); o != OutputArg::kNone) {
            if (o == OutputArg::kMissing) return Usage("-o needs a file name");
        } else if (arg.rfind("--dataset=", 0) == 0) {
            std::string v = arg.substr(10);
            if (v == "linear") {
                choices.dataset = DatasetAnswer::kLinear;
            } else if (v == "osc") {
                choices.dataset = DatasetAnswer::kLinearOsc;
            } else if (v == "srgb") {
                choices.dataset = DatasetAnswer::kNonLinearSrgb;
            } else {
                return Usage(("unknown dataset \"" + v + "\" (linear, osc or srgb)").c_str());
            }
        } else if (arg == "--reverse=yes" || arg == "--reverse=no") {
            choices.reverse = arg == "--reverse=yes";
        } else if (arg == "--gaps=interpolate" || arg == "--gaps=keep") {
            choices.interpolateGaps = arg == "--gaps=interpolate";
        } else if (arg.rfind("--", 0) == 0) {
            PipelineStep step;
            std::string error;
            if (!Pipeline_ParseStep(arg, &step, &error)) return Usage((arg + ": " + error).c_str());
            steps.push_back(step);
        } else if (!in) {
            in = argv[i];
        } else {
            return Usage(("unexpected argument \"" + arg + "\"").c_str());
        }
    }
    if (!in || !out) return Usage("process needs IN and -o OUT");
    return Process(in, out, Given(steps), choices);
}

int ReplayRefused(const char* logPath, const std::string& reason) {
    std::fprintf(stderr, "pellucida-cli: %s: %s\n", logPath, reason.c_str());
    return 2;
}

int ReplayCommand(int argc, char** argv) {
    const char* logPath = nullptr;
    const char* in = nullptr;
    const char* out = nullptr;
    for (int i = 0; i < argc; ++i) {
        std::string arg = argv[i];
        if (const OutputArg o = TakeOutput(argc, argv, &i, &out); o != OutputArg::kNone) {
            if (o == OutputArg::kMissing) return Usage("-o needs a file name");
        } else if (!logPath) {
            logPath = argv[i];
        } else if (!in) {
            in = argv[i];
        } else {
            return Usage(("unexpected argument \"" + arg + "\"").c_str());
        }
    }
    if (!logPath || !in || !out) return Usage("replay needs LOG, IN and -o OUT");
    FileBytes bytes;
    if (!File_ReadAll(logPath, &bytes)) return ReplayRefused(logPath, "cannot read the log");
    ReplayLog log;
    std::string error;
    if (!Replay_ReadLog(std::string_view(reinterpret_cast<const char*>(bytes.data.get()), bytes.size), &log,
                        &error))
        return ReplayRefused(logPath, error);
    LoadChoices choices;
    if (log.dataset) choices.dataset = *log.dataset;
    StepSource source{log.steps.size(), [&](size_t i, const ImageBuffer& image, PipelineStep* step) {
                          if (i == 0 && (image.width != log.width || image.height != log.height))
                              std::fprintf(stderr,
                                           "pellucida-cli: %s is %d x %d, the logged image was %d x %d "
                                           "(line %d); positions are read at the new size\n",
                                           in, image.width, image.height, log.width, log.height,
                                           log.sizeLine);
                          if (Replay_ResolveStep(log.steps[i], image.width, image.height, step, &error))
                              return true;
                          ReplayRefused(logPath, error);
                          return false;
                      }};
    return Process(in, out, source, choices);
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
        std::fputs(Help().c_str(), stdout);
        return 0;
    }
    if (command == "info") {
        if (argc < 3) return Usage("info needs at least one FILE");
        return Info(argc - 2, argv + 2);
    }
    if (command == "convert") {
        if (argc != 4) return Usage("convert needs IN and OUT");
        return Process(argv[2], argv[3], StepSource{}, LoadChoices{});
    }
    if (command == "process") {
        return ProcessCommand(argc - 2, argv + 2);
    }
    if (command == "replay") {
        return ReplayCommand(argc - 2, argv + 2);
    }
    return Usage(("unknown command \"" + command + "\"").c_str());
}
