// What a module form says about itself: its parameter block in the processing
// log, read off its widgets, and its info texts, read from the archive.
#include "app/Shell_Module.h"

#include "host/Shell_Log.h"
#include "ui/MessageBox.h"
#include "ui/ValueLabel.h"
#include "ui/widgets/Button.h"
#include "ui/widgets/Label.h"
#include "ui/widgets/LevelSetter.h"
#include "ui/widgets/Selector.h"

#include <string>

namespace {

constexpr const char* kUnknown = "UNKNOWN";

// The sixteen identifiers of a kind: the last character runs "0" to "?".
uint32_t Nth(const char* first, int n) {
    return Widget_PackId(first) + uint32_t(n);
}

std::string TextOf(const Widget* label) {
    const std::string* text = label ? Label_Text(label) : nullptr;
    return text ? *text : kUnknown;
}

void Line(std::string* block, const std::string& caption, const std::string& value) {
    *block += "Parameter [" + caption + "] set to [" + value + "]\n";
}

// "Pellucida_NoxAutodev_MainForm.xml" and 2 give "Pellucida_NoxAutodev_Info2.txt".
std::string InfoEntry(const char* formEntry, uint32_t index) {
    std::string name = formEntry;
    const size_t cut = name.rfind("_MainForm.xml");
    if (cut != std::string::npos) name.resize(cut);
    return name + "_Info" + std::to_string(index) + ".txt";
}

void OnInfo(Toolkit* toolkit, Widget* button, void* user) {
    Shell* shell = static_cast<Shell*>(user);
    if (!shell->module) return;
    const std::vector<uint8_t> text =
        Resources_LoadWhole(toolkit, InfoEntry(shell->module->def->form, (button->id & 0xFF) - '0').c_str());
    MessageBox_Show(toolkit, shell->module->def->name, std::string(text.begin(), text.end()).c_str(),
                    kMessageBoxInformation, nullptr, nullptr, 1, "OK");
}

}  // namespace

void Shell_LogParameters(Shell*, Widget* form) {
    if (!form || form->id == Widget_PackId("MFrm")) return;
    Shell_Log(Shell_ParameterBlock(form).c_str());
}

std::string Shell_ParameterBlock(Widget* form) {
    std::string block = "--- ";
    if (const Widget* title = Widget_FindById(form, Widget_PackId("LbTi")))
        if (const std::string* text = Label_Text(title)) block += *text;
    block += '\n';
    for (int i = 0; i < 16; ++i) {
        const Widget* selector = Widget_FindById(form, Nth("SlS0", i));
        if (!selector) continue;
        const std::string* item = Selector_Item(selector);
        Line(&block, TextOf(Selector_CaptionLabel(form, selector)), item ? *item : kUnknown);
    }
    for (int i = 0; i < 16; ++i) {
        const Widget* setter = Widget_FindById(form, Nth("LvS0", i));
        if (!setter) continue;
        Line(&block, TextOf(LevelSetter_CaptionLabel(form, setter)),
             ValueLabel_TextFor(setter, LevelSetter_Value(setter)));
    }
    return block;
}

void Shell_BindInfoButtons(Shell* shell, Widget* form) {
    for (int i = 0; i < 16; ++i) {
        Widget* button = Widget_FindById(form, Nth("BtI0", i));
        if (!button) break;
        Button_SetCallback(button, OnInfo, shell);
    }
}
