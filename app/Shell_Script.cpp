// The headless script's lines that need the program's widgets: they act as a
// user would, by posting pointer input at the widget's place on the screen,
// so everything between the window and the handler is exercised. "crash"
// ends the process on the spot, as a crash or a kill would.
#include "app/Shell.h"

#include "host/headless/Headless.h"
#include "ui/MessageBox.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/WidgetKinds.h"
#include "ui/widgets/LevelSetter.h"
#include "ui/widgets/List.h"

#include <cstdlib>

namespace {

constexpr int kCrashStatus = 70;

bool Fail(std::string* error, const std::string& why) {
    *error = why;
    return false;
}

bool ParseInt(const std::string& word, int32_t* value) {
    char* end = nullptr;
    const long v = std::strtol(word.c_str(), &end, 10);
    if (word.empty() || *end) return false;
    *value = static_cast<int32_t>(v);
    return true;
}

void Click(const PixelRect& r) {
    const uint32_t x = uint32_t(r.x + r.width / 2), y = uint32_t(r.y + r.height / 2);
    Headless_PostPointerMove(x, y);
    Headless_PostButton(x, y, true);
    Headless_PostButton(x, y, false);
}

// The widget with that identifier on the form on top: a widget beneath a box
// cannot be reached, as for a user.
Widget* FindOnTop(Toolkit* ui, const std::string& name, std::string* error) {
    if (name.size() != 4) return Fail(error, "\"" + name + "\" is not a four-character identifier"), nullptr;
    Widget* widget = Widget_FindById(ui->currentForm, Widget_PackId(name.c_str()));
    if (!widget) return Fail(error, "no widget " + name + " on the screen"), nullptr;
    const PixelRect r = Widget_PixelRect(ui, widget);
    if (r.width <= 0 || r.height <= 0) return Fail(error, name + " is hidden"), nullptr;
    if (const auto* button = Widget_Record<ButtonRecord>(widget); button && button->disabled)
        return Fail(error, name + " is greyed out"), nullptr;
    return widget;
}

Widget* TopBox(Toolkit* ui, std::string* error) {
    if (!MessageBox_Title(ui->currentForm)) return Fail(error, "no message box is up"), nullptr;
    return ui->currentForm;
}

}  // namespace

bool Shell_ScriptCommand(const std::vector<std::string>& words, std::string* error) {
    Shell* shell = Shell_Get();
    if (!shell || !shell->ui) return Fail(error, "the program has no screen yet");
    Toolkit* ui = shell->ui.get();
    const std::string& verb = words[0];
    if (verb == "press" && words.size() == 2) {
        Widget* widget = FindOnTop(ui, words[1], error);
        if (!widget) return false;
        Click(Widget_PixelRect(ui, widget));
        return true;
    }
    if (verb == "answer" && words.size() == 2) {
        Widget* box = TopBox(ui, error);
        if (!box) return false;
        const std::vector<Widget*> buttons = MessageBox_Buttons(box);
        int32_t index = -1;
        if (words[1][0] == '#') {
            if (!ParseInt(words[1].substr(1), &index) || index < 0 || size_t(index) >= buttons.size())
                return Fail(error, "the box has no button " + words[1]);
        } else {
            for (size_t i = 0; i < buttons.size(); ++i)
                if (const auto* b = Widget_Record<ButtonRecord>(buttons[i]); b && b->text == words[1])
                    index = static_cast<int32_t>(i);
            if (index < 0) return Fail(error, "the box has no button \"" + words[1] + "\"");
        }
        Click(Widget_PixelRect(ui, buttons[size_t(index)]));
        return true;
    }
    if (verb == "expect-box" && words.size() == 2) {
        Widget* box = TopBox(ui, error);
        if (!box) return false;
        if (words[1] != MessageBox_Title(box))
            return Fail(error, std::string("the box on top is \"") + MessageBox_Title(box) + "\"");
        return true;
    }
    if (verb == "set" && words.size() == 3) {
        Widget* setter = FindOnTop(ui, words[1], error);
        int32_t value = 0;
        if (!setter) return false;
        if (!Widget_Record<LevelSetterRecord>(setter))
            return Fail(error, words[1] + " is not a level setter");
        if (!ParseInt(words[2], &value) || value < 0)
            return Fail(error, "\"" + words[2] + "\" is not a value");
        LevelSetter_SetValue(ui, setter, uint32_t(value), true);
        Toolkit_Dispatch(ui);
        return true;
    }
    if (verb == "drag" && words.size() == 6) {
        Widget* widget = FindOnTop(ui, words[1], error);
        int32_t v[4];
        if (!widget) return false;
        for (int i = 0; i < 4; ++i)
            if (!ParseInt(words[size_t(i) + 2], &v[i]))
                return Fail(error, "\"" + words[size_t(i) + 2] + "\" is not a number");
        const PixelRect r = Widget_PixelRect(ui, widget);
        const auto at = [&](int32_t x, int32_t y) {
            return std::pair<uint32_t, uint32_t>(uint32_t(r.x + x), uint32_t(r.y + y));
        };
        const auto [x0, y0] = at(v[0], v[1]);
        const auto [xm, ym] = at((v[0] + v[2]) / 2, (v[1] + v[3]) / 2);
        const auto [x1, y1] = at(v[2], v[3]);
        Headless_PostPointerMove(x0, y0);
        Headless_PostButton(x0, y0, true);
        Headless_PostPointerMove(xm, ym);
        Headless_PostPointerMove(x1, y1);
        Headless_PostButton(x1, y1, false);
        return true;
    }
    if (verb == "select" && words.size() == 3) {
        // A click on the list's row, which must be in view.
        Widget* list = FindOnTop(ui, words[1], error);
        int32_t row = 0;
        if (!list) return false;
        const auto* record = Widget_Record<ListRecord>(list);
        if (!record) return Fail(error, words[1] + " is not a list");
        if (!ParseInt(words[2], &row) || row < 0 || size_t(row) >= record->items.size())
            return Fail(error, words[1] + " has no row " + words[2]);
        const PixelRect r = List_RowRect(ui, list, row);
        if (r.height <= 0) return Fail(error, "row " + words[2] + " of " + words[1] + " is out of view");
        Click(r);
        return true;
    }
    if (verb == "crash" && words.size() == 1) {
        // No close, no clean-up, no flushing: what a crash or a kill leaves.
        std::_Exit(kCrashStatus);
    }
    return Fail(error, "wrong number of words");
}
