// Parsing and running the headless backend's input scripts.
#include "host/headless/Headless_Script.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

namespace {

bool ParseNumber(const std::string& word, uint32_t* value) {
    if (word.empty() || word.size() > 9) return false;
    for (char c : word)
        if (c < '0' || c > '9') return false;
    *value = static_cast<uint32_t>(std::strtoul(word.c_str(), nullptr, 10));
    return true;
}

// The rest of the line after the verb, trimmed: paths and captions may hold spaces.
std::string RestOfLine(const std::string& line, const std::string& verb) {
    std::string rest = line.substr(line.find(verb) + verb.size());
    rest.erase(0, rest.find_first_not_of(" \t"));
    rest.erase(rest.find_last_not_of(" \t\r") + 1);
    return rest;
}

bool ParseLine(const std::string& line, HeadlessCommand* command, std::string* error) {
    std::istringstream in(line);
    std::string verb;
    in >> verb;
    std::vector<std::string> args;
    for (std::string word; in >> word;) args.push_back(word);

    auto numbers = [&](size_t count, size_t optional) {
        if (args.size() < count - optional || args.size() > count) return false;
        uint32_t* slots[] = {&command->a, &command->b};
        for (size_t i = 0; i < args.size(); ++i)
            if (!ParseNumber(args[i], slots[i])) return false;
        return true;
    };

    static const std::map<std::string, HeadlessCommand::Kind> kPointer = {
        {"move", HeadlessCommand::kMove},
        {"press", HeadlessCommand::kPress},
        {"release", HeadlessCommand::kRelease},
        {"click", HeadlessCommand::kClick},
    };
    static const std::map<std::string, uint32_t> kKeys = {
        {"backspace", 8}, {"tab", 9}, {"enter", 13}, {"escape", 27}};

    if (verb == "tick" || verb == "wait") {
        command->kind = verb == "tick" ? HeadlessCommand::kTick : HeadlessCommand::kWait;
        command->a = 1;
        if (numbers(1, 1) && command->a > 0) return true;
    } else if (verb == "press" && args.size() == 1) {
        // "press ID" presses a widget; "press X Y" the pointer button.
        command->kind = HeadlessCommand::kApp;
    } else if (auto p = kPointer.find(verb); p != kPointer.end()) {
        command->kind = p->second;
        if (numbers(2, 0)) return true;
    } else if (verb == "resize") {
        command->kind = HeadlessCommand::kResize;
        if (numbers(2, 0)) return true;
    } else if (verb == "char") {
        command->kind = HeadlessCommand::kChar;
        if (args.size() == 1 && args[0].size() == 1) {
            command->a = static_cast<unsigned char>(args[0][0]);
            return true;
        }
        if (args.size() == 2 && args[0] == "code" && ParseNumber(args[1], &command->a)) return true;
    } else if (verb == "key") {
        command->kind = HeadlessCommand::kChar;
        if (args.size() == 1 && kKeys.count(args[0])) {
            command->a = kKeys.at(args[0]);
            return true;
        }
    } else if (verb == "paint" || verb == "close") {
        command->kind = verb == "paint" ? HeadlessCommand::kPaint : HeadlessCommand::kClose;
        if (args.empty()) return true;
    } else if (verb == "idle") {
        command->kind = HeadlessCommand::kIdle;
        if (args.empty()) return true;
    } else if (std::find(std::begin(kHeadlessAppVerbs), std::end(kHeadlessAppVerbs), verb) !=
               std::end(kHeadlessAppVerbs)) {
        command->kind = HeadlessCommand::kApp;
    } else if (verb == "screenshot" || verb == "dialog" || verb == "drop") {
        command->kind = verb == "screenshot" ? HeadlessCommand::kScreenshot
                        : verb == "dialog"   ? HeadlessCommand::kDialog
                                             : HeadlessCommand::kDrop;
        const std::string rest = RestOfLine(line, verb);
        command->text = rest;
        command->cancel = verb == "dialog" && rest == "cancel";
        if (!rest.empty()) return true;
    }
    if (command->kind == HeadlessCommand::kApp) {
        command->args = {verb};
        if (verb == "answer" || verb == "expect-box") {
            // Captions and titles hold spaces: the rest of the line is one word.
            const std::string rest = RestOfLine(line, verb);
            if (rest.empty()) {
                *error = verb + " needs a text";
                return false;
            }
            command->args.push_back(rest);
        } else {
            command->args.insert(command->args.end(), args.begin(), args.end());
        }
        return true;
    }
    *error = "cannot understand \"" + line + "\"";
    return false;
}

}  // namespace

bool HeadlessScript_Parse(const std::string& text, HeadlessScript* script, std::string* error) {
    HeadlessScript parsed;
    std::istringstream in(text);
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        if (size_t hash = line.find('#'); hash != std::string::npos) line.erase(hash);
        if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
        HeadlessCommand command{};
        command.line = number;
        std::string why;
        if (!ParseLine(line, &command, &why)) {
            *error = "line " + std::to_string(number) + ": " + why;
            return false;
        }
        parsed.commands.push_back(command);
    }
    parsed.loaded = true;
    *script = std::move(parsed);
    return true;
}

bool HeadlessScript_Load(const char* path, HeadlessScript* script) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::fprintf(stderr, "headless script %s: cannot be read\n", path);
        return false;
    }
    std::stringstream text;
    text << file.rdbuf();
    std::string error;
    if (!HeadlessScript_Parse(text.str(), script, &error)) {
        std::fprintf(stderr, "headless script %s: %s\n", path, error.c_str());
        return false;
    }
    return true;
}

bool HeadlessScript_Step(HeadlessScript& script, const HeadlessScriptActions& actions,
                         const std::function<bool()>& posted) {
    while (true) {
        if (script.idling) {
            if (actions.busy && actions.busy()) {
                actions.idle();
                return true;
            }
            script.idling = false;
        }
        if (script.waitLeft > 0) {
            --script.waitLeft;
            script.settled = true;
            actions.idle();
            return true;
        }
        if (script.next >= script.commands.size()) return false;
        // A screenshot shows what the program made of all earlier input, and a
        // program's line, a dialog answer or a drop acts on the state that input
        // left (an answer queued too early would go to a dialog opened by an
        // earlier press): idle time runs first until it has handled what is
        // queued and finished what it started (a file being read).
        const HeadlessCommand::Kind upcoming = script.commands[script.next].kind;
        const bool needsSettled = upcoming == HeadlessCommand::kScreenshot ||
                                  upcoming == HeadlessCommand::kApp || upcoming == HeadlessCommand::kDialog ||
                                  upcoming == HeadlessCommand::kDrop;
        if (needsSettled && !script.settled) {
            script.settled = true;
            script.idling = true;
            actions.idle();
            return true;
        }
        const HeadlessCommand& c = script.commands[script.next++];
        if (c.kind != HeadlessCommand::kScreenshot && c.kind != HeadlessCommand::kDialog)
            script.settled = false;
        switch (c.kind) {
            case HeadlessCommand::kTick:
                actions.postTimer(c.a);
                break;
            case HeadlessCommand::kChar:
                actions.postChar(c.a);
                break;
            case HeadlessCommand::kMove:
                actions.postMove(c.a, c.b);
                break;
            case HeadlessCommand::kPress:
                actions.postButton(c.a, c.b, true);
                break;
            case HeadlessCommand::kRelease:
                actions.postButton(c.a, c.b, false);
                break;
            case HeadlessCommand::kClick:
                actions.postButton(c.a, c.b, true);
                actions.postButton(c.a, c.b, false);
                break;
            case HeadlessCommand::kResize:
                actions.postResize(c.a, c.b);
                break;
            case HeadlessCommand::kPaint:
                actions.postPaint();
                break;
            case HeadlessCommand::kClose:
                actions.postClose();
                break;
            case HeadlessCommand::kWait:
                script.waitLeft = c.a;
                break;
            case HeadlessCommand::kScreenshot:
                if (!actions.saveScreen(c.text.c_str()))
                    std::fprintf(stderr, "headless script: could not write %s\n", c.text.c_str());
                break;
            case HeadlessCommand::kDialog:
                actions.queueDialogAnswer(c.cancel ? std::nullopt : std::optional<std::string>(c.text));
                break;
            case HeadlessCommand::kDrop:
                actions.postDrop(c.text);
                break;
            case HeadlessCommand::kIdle:
                // At least one idle pass, so that what was posted last is handled.
                script.idling = true;
                script.settled = true;
                actions.idle();
                return true;
            case HeadlessCommand::kApp: {
                std::string why = "the program carries out no such line";
                if (!actions.appCommand || !actions.appCommand(c.args, &why)) {
                    std::fprintf(stderr, "headless script: line %d (%s): %s\n", c.line, c.args[0].c_str(),
                                 why.c_str());
                    std::exit(kHeadlessScriptFailedStatus);
                }
                break;
            }
        }
        if (posted()) return true;
    }
}
