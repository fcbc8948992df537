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
        kDialog
    };
    Kind kind;
    uint32_t a = 0, b = 0;
    std::string text;     // screenshot file, dialog path
    bool cancel = false;  // dialog cancel
};

struct HeadlessScript {
    bool loaded = false;
    std::vector<HeadlessCommand> commands;
    size_t next = 0;
    uint32_t waitLeft = 0;  // idle passes still owed by the current "wait"
    bool settled = false;   // an idle pass ran since the last input was posted
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
};

// Runs commands until one posted a message (as `posted` tells) or a wait used
// an idle pass. False once the script is used up.
bool HeadlessScript_Step(HeadlessScript& script, const HeadlessScriptActions& actions,
                         const std::function<bool()>& posted);
