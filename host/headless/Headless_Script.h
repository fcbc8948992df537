// The headless backend's input scripts: parsed once, then run a step at a time
// whenever the main loop would wait.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

struct HeadlessCommand {
    enum Kind {
        kTick,
        kChar,
        kMove,
        kPress,
        kRelease,
        kClick,
        kResize,
        kPaint,
        kClose,
        kWait,
        kScreenshot,
        kDialog,
        kDrop,  // a file dropped on the window
        kIdle,  // virtual time runs until no background task runs and nothing is queued
        kApp    // a line the program itself carries out (press ID, answer, set, drag, ...)
    };
    Kind kind;
    uint32_t a = 0, b = 0;
    std::string text;               // screenshot file, dialog or drop path
    bool cancel = false;            // dialog cancel
    std::vector<std::string> args;  // kApp: the verb, then its words
    int line = 0;                   // in the script, for messages
};

// Carries out one of the program's own script lines (the words of a kApp
// command, verb first); false with the reason when the line fails.
using HeadlessAppCommandFn = bool (*)(const std::vector<std::string>& words, std::string* error);
// The verbs the program carries out, in addition to the backend's own.
inline constexpr const char* kHeadlessAppVerbs[] = {"press", "answer", "expect-box", "set",
                                                    "drag",  "select", "crash"};
// Status of a program whose script line failed.
inline constexpr int kHeadlessScriptFailedStatus = 3;

struct HeadlessScript {
    bool loaded = false;
    std::vector<HeadlessCommand> commands;
    size_t next = 0;
    uint32_t waitLeft = 0;  // idle passes still owed by the current "wait"
    bool settled = false;   // an idle pass ran since the last input was posted
    bool idling = false;    // an "idle" line waits for the program to settle
};

// Parses a script; false (with the file and line on standard error) when the
// file cannot be read or a line is not understood.
bool HeadlessScript_Load(const char* path, HeadlessScript* script);
bool HeadlessScript_Parse(const std::string& text, HeadlessScript* script, std::string* error);

struct HeadlessScriptActions {
    void (*postChar)(uint32_t);
    void (*postButton)(uint32_t, uint32_t, bool);
    void (*postMove)(uint32_t, uint32_t);
    void (*postResize)(uint32_t, uint32_t);
    void (*postClose)();
    void (*postPaint)();
    void (*postTimer)(uint32_t);
    void (*idle)();
    bool (*saveScreen)(const char*);
    void (*queueDialogAnswer)(std::optional<std::string>);
    void (*postDrop)(const std::string&);
    bool (*busy)();                   // a background task runs or input is queued
    HeadlessAppCommandFn appCommand;  // null: the program carries out no lines
};

// Runs commands until one posted a message (as `posted` tells) or a wait used
// an idle pass. False once the script is used up. A program's line that fails
// ends the process with kHeadlessScriptFailedStatus, naming the line.
bool HeadlessScript_Step(HeadlessScript& script, const HeadlessScriptActions& actions,
                         const std::function<bool()>& posted);
