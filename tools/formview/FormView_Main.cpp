// pellucida-formview: starts the host (backend by name, as the program does),
// creates the toolkit from the `resources` archive beside the executable (or
// the one named by --resources=), shows a named form and runs the main loop
// until the window is closed. The test form is filled with its sample content.
#include "host/Host.h"
#include "host/Host_Run.h"
#include "ui/Layout.h"
#include "ui/TestForm.h"
#include "ui/Toolkit.h"
#include "ui/Toolkit_AppEvent.h"
#include "ui/Toolkit_Create.h"
#include "ui/archive/Resources_Open.h"
#include "ui/markup/Markup_Form.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

namespace {

constexpr const char* kUsage =
    "Usage: pellucida-formview [--host=NAME] [--script=FILE] [--resources=FILE] [FORM]\n"
    "  --resources=FILE  the archive to read (default: 'resources' beside the program)\n"
    "  --dump         print the widget tree with pixel rectangles after the first layout\n"
    "  FORM           the archive entry to show (default Pellucida_TestForm.xml)\n";

struct Viewer {
    std::string form = kTestFormEntry;
    std::string resources;
    bool dump = false;
    std::unique_ptr<Toolkit> toolkit;
    TestFormContent content;
};

std::string IdText(uint32_t id) {
    std::string s;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char c = static_cast<char>((id >> shift) & 0xFF);
        s += (c >= 32 && c < 127) ? c : '.';
    }
    return s;
}

void Dump(const Toolkit* toolkit, const Widget* widget, int depth) {
    const PixelRect r = Widget_PixelRect(toolkit, widget);
    std::printf("%*s%s kind %u at %d,%d %dx%d\n", depth * 2, "",
                widget->id ? IdText(widget->id).c_str() : "----", widget->type, r.x, r.y, r.width, r.height);
    for (const auto& child : widget->children) Dump(toolkit, child.get(), depth + 1);
}

// The handler has no argument for its state; the viewer is the program.
Viewer* g_viewer = nullptr;

void Start(Viewer* viewer) {
    std::unique_ptr<ResourceArchive> archive;
    if (viewer->resources.empty()) {
        archive = Resources_Open();
    } else {
        int code = 0;
        archive = Resources_OpenPath(viewer->resources.c_str(), &code);
        if (!archive) {
            std::fprintf(stderr, "pellucida-formview: cannot open %s (code %d)\n", viewer->resources.c_str(),
                         code);
            std::exit(2);
        }
    }
    viewer->toolkit = Toolkit_CreateWithArchive(std::move(archive));
    Toolkit* toolkit = viewer->toolkit.get();
    if (viewer->form == kTestFormEntry) {
        TestForm_Load(toolkit, &viewer->content);
    } else if (!Form_Load(toolkit, viewer->form.c_str(), nullptr)) {
        std::fprintf(stderr, "pellucida-formview: no form %s in the archive\n", viewer->form.c_str());
    }
    Layout_Apply(toolkit, toolkit->root.get());
    if (viewer->dump) Dump(toolkit, toolkit->root.get(), 0);
}

int OnAppEvent(AppEvent* event) {
    if (event->kind == kAppEventStart) {
        Start(g_viewer);
        return 0;
    }
    return Toolkit_OnAppEvent(g_viewer->toolkit.get(), event);
}

}  // namespace

int main(int argc, char** argv) {
    Viewer viewer;
    HostOptions options;
    for (int i = 1; i < argc; ++i) {
        if (Host_ParseOption(argv[i], &options)) {
            continue;
        } else if (std::strncmp(argv[i], "--resources=", 12) == 0) {
            viewer.resources = argv[i] + 12;
        } else if (std::strcmp(argv[i], "--dump") == 0) {
            viewer.dump = true;
        } else if (std::strcmp(argv[i], "--help") == 0) {
            std::printf("%s%s", kUsage, kHostOptionsHelp);
            return 0;
        } else if (argv[i][0] == '-') {
            std::fprintf(stderr, "pellucida-formview: unknown argument %s\n%s%s", argv[i], kUsage,
                         kHostOptionsHelp);
            return 2;
        } else {
            viewer.form = argv[i];
        }
    }
    g_viewer = &viewer;
    const int status = Host_Run("pellucida-formview", options, OnAppEvent);
    viewer.toolkit.reset();
    return status;
}
