// The application shell: the state the desktop program keeps from start to
// end (the toolkit, the working image and its mask, the file name, what the
// load decided about the data, the undo step) and the operations of the main
// form. The host's handler has no user pointer, so the one shell of the
// process is reached through Shell_Get; everything else takes it as a
// parameter.
#pragma once

#include "app/Shell_History.h"
#include "formats/File_Load.h"
#include "formats/File_LoadQuestions.h"
#include "image/Image.h"
#include "modules/Module.h"
#include "ui/Toolkit.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

struct AppEvent;
struct ShellModule;

// The splash stays up for more than twice this many ticks of 100 ms.
inline constexpr uint32_t kSplashPeriodTicks = 8;

// The state of an open in progress: the image read, what the load found, and
// the answers given so far; the questions are asked one box at a time.
struct ShellPendingLoad {
    ImagePtr image;
    LoadInfo info;
    LoadAnswers answers;
    std::string path;
};

// A file being read on the background task. The progress dialog comes up
// when the read takes longer than half a second; a cancel lets the reader run
// out and throws its result away (readers cannot be interrupted).
struct ShellLoadTask {
    std::string path;
    ImageBuffer* image = nullptr;  // written by the task, taken once it ended
    LoadInfo info;
    uint32_t ticks = 0;       // 100 ms ticks since the read began
    bool background = false;  // read on the background task, not in place
    std::atomic<bool> cancel{false};
    std::atomic<int> percent{0};
    Widget* progress = nullptr;  // the dialog, once shown
};

// The undo step: the state before the last kept change, in the tracking
// store, with what was recorded of it so a damaged slot is noticed.
struct ShellUndo {
    bool available = false;
    bool redo = false;  // the last press undid: the next one redoes
    int32_t width = 0;
    int32_t height = 0;
    bool hadMask = false;
    bool mono = false;
    // What the data was then: linear or stretched, a global stretch kept
    // before, the tracked reference it had (in the reference's undo slot).
    bool linear = true;
    bool stretchKept = false;
    bool reference = false;
};

struct Shell {
    std::unique_ptr<Toolkit> ui;  // the UI root; null before start and after teardown
    int quit = 0;                 // set once the close question was answered "Close"

    // Forms loaded but not on screen hang here, outside the root.
    Widget shelf;
    uint32_t splashTicks = 0;
    ImagePtr splashPicture;
    std::vector<uint8_t> identityLut;

    // The working data.
    ImagePtr image;
    ImagePtr mask;
    std::string currentName;  // the file loaded or last saved; shown in the title
    LoadOutcome outcome;      // linear, tracking on or off
    bool artefacts = false;   // the load found a stacking-artefact border...
    ArtefactBox artefactBox;  // ...and this is the box inside it (Crop starts from it)
    ShellUndo undo;
    ShellHistory history;  // every kept state on disk, and the recovery of a run that died

    // The main view's screen stretch for linear data (display only).
    bool screenStretch = true;
    int32_t shownWidth = 0;  // the size of the image the main view shows
    int32_t shownHeight = 0;
    std::vector<uint8_t> screenLuts;  // three tables of 65536 entries
    bool stretchStale = true;         // the working image changed since the tables were made

    // The module entered, if any, and what each module keeps between entries.
    std::shared_ptr<ShellModule> module;
    std::map<const ModuleDef*, ModuleParamsBuffer> moduleState;
    std::map<const ModuleDef*, uint32_t> moduleForms;  // the forms loaded, by identifier
    bool globalStretchKept = false;                    // a global stretch was kept since the load
    // With tracking on, the linear data from before the first global stretch
    // is kept in the tracking store, in the working image's geometry.
    bool trackedReference = false;

    std::unique_ptr<ShellLoadTask> loading;
    std::unique_ptr<ShellPendingLoad> pendingLoad;
    std::string pendingSave;  // the name waiting for the overwrite answer
    std::string openOnStart;  // `pellucida IMAGE`: opened once the main form is up
    bool mainFormUp = false;
    std::string programDir;
};

// The one shell of the process, installed by the program's main routine.
void Shell_Install(Shell* shell);
Shell* Shell_Get();

// The application handler (Event_AppEventSetHandler): application events
// become toolkit events; returns the quit flag.
int Shell_OnAppEvent(AppEvent* event);

// Start-up on the start event: the toolkit, the splash and its tick handler.
void Shell_StartUi(Shell* shell);
// Once the splash has been up long enough: the forms, the buttons, the
// tracking slots and the main form on screen.
void Shell_StartMainForm(Shell* shell);
// Frees the toolkit and everything drawn with it.
void Shell_TearDownUi(Shell* shell);

// Forms: a loaded form waits on the shelf until it is shown.
Widget* Shell_LoadForm(Shell* shell, const char* entry);
void Shell_ShowForm(Shell* shell, uint32_t formId);
void Shell_HideForm(Shell* shell, uint32_t formId);
Widget* Shell_Find(Shell* shell, uint32_t id);  // on screen or on the shelf

// The main form's buttons: one handler for all, dispatching on the identifier.
void Shell_BindMainButtons(Shell* shell);
void Shell_OnMainButton(Shell* shell, uint32_t buttonId);
// Replaces the working image (the screen stretch is made again for it).
void Shell_SetImage(Shell* shell, ImagePtr image);
// After the working image changed: the title, the buttons that need an image,
// the view and its screen stretch.
void Shell_RefreshMain(Shell* shell);
// The zoom label of the form that holds `view`: "%d%%" or "%d%% (fit)".
void Shell_RefreshZoomLabel(Shell* shell, Widget* view);
std::string Shell_ZoomText(int32_t zoom, bool fit);
std::string Shell_TitleText(const std::string& path, const ImageBuffer* image);

// Runs the "filedialog" driver's open or save dialog (`method`); false when
// it was cancelled, else the chosen path.
bool Shell_FileDialog(const char* method, std::string* chosen);
// Open: the dialog (or a dropped or given path), the load, the questions.
void Shell_Open(Shell* shell);
void Shell_OpenPath(Shell* shell, const std::string& path);
// On every tick while a file is read: the progress dialog after half a
// second, and the questions (or the failure) once the read has ended.
void Shell_PollLoad(Shell* shell, uint32_t ticks);
// The headless backend's "still working" test: a read whose result is not
// yet taken.
bool Shell_Busy();
// Save: the dialog, the name check, the overwrite question, the write.
void Shell_Save(Shell* shell);

// Makes `result` (and `resultMask`, when the step changed the mask) the
// working data and records the state before as the undo step, under the wait
// cursor; the new state goes into the history as made by `caption` (the
// module's name).
void Shell_CommitResult(Shell* shell, ImagePtr result, ImagePtr resultMask, const char* caption = nullptr);
// A module's kept step: its result committed as above, and the tracked state
// following it (a global stretch starts the tracked reference from the data
// before it; a geometry step is applied to the reference too).
void Shell_CommitStep(Shell* shell, const ModuleDef& module, const void* params, ImagePtr result,
                      ImagePtr resultMask);
// The tracked reference, converted back to colour; null when there is none
// for the working image's size.
ImagePtr Shell_TrackedReference(Shell* shell);
// Undo's side of it: the flags and the references trade places with the undo step's.
void Shell_TrackedUndo(Shell* shell);
// "BtUn": swaps the working data with the undo step.
void Shell_Undo(Shell* shell);
// "BtMH", "BtMV": the mirrors, one undoable step each.
void Shell_RunMainFormModule(Shell* shell, uint32_t buttonId);

// The boxes of the main form.
void Shell_ShowSupport(Shell* shell);
void Shell_ShowAbout(Shell* shell);

// The headless script's lines that the program carries out (press, answer,
// expect-box, set, drag).
bool Shell_ScriptCommand(const std::vector<std::string>& words, std::string* error);

// The screen lookup tables for linear data, red, green and blue one after the
// other: each channel's sky median and spread set its black point and a
// midtone curve, so a linear stack shows its object on a neutral sky.
void Shell_ComputeScreenStretch(const ImageBuffer* image, std::vector<uint8_t>* luts);

inline constexpr const char* kMainFormEntry = "Pellucida_MainForm.xml";
inline constexpr const char* kSplashEntry = "Pellucida_Splash2.xml";
inline constexpr const char* kSplashPicture = "splash.png";
inline constexpr const char* kSupportLinksEntry = "support_links.txt";
inline constexpr const char* kNoImageTitle = "No Image";
inline constexpr const char* kScreenStretchActive = "Screen stretch active";
