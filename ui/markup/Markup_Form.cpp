// Building a form's widgets from its markup. One parse state per form: the
// stack of widgets that children attach to (an empty slot skips a subtree),
// the one "active" flag of conditional sections, and the counts of elements
// opened and closed.
#include "ui/markup/Markup_Form.h"

#include "ui/Entities.h"
#include "ui/Layout.h"
#include "ui/Toolkit.h"
#include "ui/WidgetKinds.h"
#include "ui/markup/Markup_Attributes.h"
#include "ui/markup/Markup_Reader.h"
#include "ui/widgets/LevelSetter.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr uint64_t kFormAttributes = kAttrId | kAttrGeometry;
constexpr uint64_t kControlAttributes = kAttrId | kAttrNavigation | kAttrQuickKey;

enum class ElementRole { Conditional, Entity, Widget };

struct ElementRule {
    const char* name;
    ElementRole role;
    uint32_t kind;
    uint64_t attributes;
    bool container;  // children attach to it; under any other element they are skipped
};

constexpr ElementRule kElements[] = {
    {"CONDITIONAL", ElementRole::Conditional, 0, kAttrCondition, false},
    {"ENTITY", ElementRole::Entity, 0, kAttrString | kAttrReference, false},
    {"FORM", ElementRole::Widget, kWidgetForm, kFormAttributes, true},
    {"PELLUCIDAVIEW", ElementRole::Widget, kWidgetImageView, kFormAttributes, false},
    {"PELLUCIDAHISTOGRAM", ElementRole::Widget, kWidgetHistogram, kFormAttributes | kAttrNumBins, false},
    {"VIRTUALKEYBOARD", ElementRole::Widget, kWidgetVirtualKeyboard, kAttrId | kAttrNumbersOnly, false},
    {"LAYOUT", ElementRole::Widget, kWidgetLayout,
     kControlAttributes | kAttrGeometry | kAttrQuadrant | kAttrMetaFocus | kAttrFillBackground, true},
    {"BUTTON", ElementRole::Widget, kWidgetButton,
     kControlAttributes | kAttrText | kAttrTextAlign | kAttrResource | kAttrNoGloss | kAttrFlat |
         kAttrRounded,
     false},
    {"LABEL", ElementRole::Widget, kWidgetLabel, kAttrId | kAttrText | kAttrAlign, false},
    {"FIELD", ElementRole::Widget, kWidgetField, kControlAttributes | kAttrText | kAttrAlign | kAttrResource,
     false},
    {"FIELDMULTI", ElementRole::Widget, kWidgetFieldMulti, kControlAttributes, false},
    {"BITMAP", ElementRole::Widget, kWidgetBitmap,
     kAttrId | kAttrResource | kAttrAlign | kAttrFillMode | kAttrFillBackground, false},
    {"LIST", ElementRole::Widget, kWidgetList, kControlAttributes, false},
    {"SELECTOR", ElementRole::Widget, kWidgetSelector, kControlAttributes | kAttrItem, false},
    {"LEVELSETTER", ElementRole::Widget, kWidgetLevelSetter, kAttrId | kAttrNavigation, false},
    {"APPLET", ElementRole::Widget, kWidgetApplet, kAttrId | kAttrNavigation, false},
    {"GESTUREAREA", ElementRole::Widget, kWidgetGestureArea, kAttrId, false},
};

const ElementRule* FindElement(const std::string& name) {
    for (const ElementRule& element : kElements)
        if (name == element.name) return &element;
    return nullptr;
}

// A level setter's caption and value label are its own children; their
// places inside the setter are the setter's business, not the layout's.
constexpr uint32_t kSetterLabelSplit = 22938;  // 70% of the setter's width
constexpr uint32_t kSetterLabelHeight = 16384;

Widget* AddSetterLabel(Widget* setter, uint32_t x, uint32_t width, uint32_t align) {
    Widget* label = Widget_AddChild(setter, kWidgetLabel);
    auto record = std::make_unique<LabelRecord>();
    record->align = align;
    label->data = std::move(record);
    label->x = x;
    label->width = width;
    label->height = kSetterLabelHeight;
    return label;
}

std::unique_ptr<WidgetRecord> MakeRecord(uint32_t kind, const MarkupValues& v) {
    switch (kind) {
        case kWidgetLayout: {
            auto r = std::make_unique<LayoutRecord>();
            r->geometry = v.geometry;
            r->navigation = v.navigation;
            r->quadrant = v.quadrant;
            r->metaFocus = v.metaFocus;
            r->fillBackground = v.fillBackground;
            return r;
        }
        case kWidgetForm: {
            auto r = std::make_unique<FormRecord>();
            r->geometry = v.geometry;
            return r;
        }
        case kWidgetImageView: {
            auto r = std::make_unique<ImageViewRecord>();
            r->geometry = v.geometry;
            return r;
        }
        case kWidgetHistogram: {
            auto r = std::make_unique<HistogramRecord>();
            r->geometry = v.geometry;
            r->numBins = v.numBins;
            return r;
        }
        case kWidgetVirtualKeyboard: {
            auto r = std::make_unique<VirtualKeyboardRecord>();
            r->numbersOnly = v.numbersOnly;
            return r;
        }
        case kWidgetButton: {
            auto r = std::make_unique<ButtonRecord>();
            r->navigation = v.navigation;
            r->text = v.text;
            r->textAlign = v.textAlign;
            r->resource = v.resource;
            r->noGloss = v.noGloss;
            r->flat = v.flat;
            r->rounded = v.rounded;
            return r;
        }
        case kWidgetLabel: {
            auto r = std::make_unique<LabelRecord>();
            r->text = v.text;
            r->align = v.align;
            return r;
        }
        case kWidgetField: {
            auto r = std::make_unique<FieldRecord>();
            r->navigation = v.navigation;
            r->text = v.text;
            r->align = v.align;
            r->resource = v.resource;
            return r;
        }
        case kWidgetFieldMulti: {
            auto r = std::make_unique<FieldMultiRecord>();
            r->navigation = v.navigation;
            return r;
        }
        case kWidgetBitmap: {
            auto r = std::make_unique<BitmapRecord>();
            r->resource = v.resource;
            if (v.alignGiven) r->align = v.align;
            r->fillMode = v.fillMode;
            r->fillBackground = v.fillBackground;
            return r;
        }
        case kWidgetList: {
            auto r = std::make_unique<ListRecord>();
            r->navigation = v.navigation;
            return r;
        }
        case kWidgetSelector: {
            auto r = std::make_unique<SelectorRecord>();
            r->navigation = v.navigation;
            r->items = v.items;
            return r;
        }
        case kWidgetLevelSetter: {
            auto r = std::make_unique<LevelSetterRecord>();
            r->navigation = v.navigation;
            return r;
        }
        case kWidgetApplet: {
            auto r = std::make_unique<AppletRecord>();
            r->navigation = v.navigation;
            return r;
        }
        case kWidgetGestureArea:
            return std::make_unique<GestureAreaRecord>();
        default:
            return nullptr;
    }
}

// Condition="left=right" or "left!=right", split at the first "=" from the
// second character on; a text without "=" is true when not empty.
bool EvaluateCondition(const std::string& text) {
    const size_t equals = text.size() > 1 ? text.find('=', 1) : std::string::npos;
    if (equals == std::string::npos) return !text.empty();
    const bool negated = text[equals - 1] == '!';
    const std::string left = text.substr(0, negated ? equals - 1 : equals);
    const std::string right = text.substr(equals + 1);
    return (left == right) != negated;
}

struct Level {
    Widget* widget;    // the element's widget, or null when it was skipped
    Widget* children;  // where its children attach, or null to skip them
};

struct FormParse {
    Toolkit* toolkit;
    std::vector<Level> levels;
    bool active = true;
    uint32_t opens = 0;
    uint32_t closes = 0;
    Widget* first = nullptr;
};

void FinishWidget(Widget* widget) {
    if (auto* setter = Widget_Record<LevelSetterRecord>(widget)) {
        // The caption is the setter's paired label ("LvS1" with "LbL1"), so that
        // whoever looks the caption up by identifier finds the one shown.
        if (!setter->captionLabel) {
            setter->captionLabel = AddSetterLabel(widget, 0, kSetterLabelSplit, kAlignLeft);
            if (widget->id != 0) setter->captionLabel->id = LevelSetter_CaptionId(widget->id);
        }
        if (!setter->valueLabel)
            setter->valueLabel =
                AddSetterLabel(widget, kSetterLabelSplit, kUnitsWhole - kSetterLabelSplit, kAlignRight);
    }
}

void OpenElement(FormParse* parse, const ElementRule& element, const MarkupTag& tag) {
    MarkupValues values;
    if (element.role == ElementRole::Conditional) {
        Markup_ReadAttributes(parse->toolkit, tag, element.attributes, &values);
        parse->active = EvaluateCondition(values.condition);
        ++parse->opens;
        return;
    }
    if (!parse->active) return;
    ++parse->opens;
    Markup_ReadAttributes(parse->toolkit, tag, element.attributes, &values);
    if (element.role == ElementRole::Entity) {
        if (values.hasString && values.hasReference)
            Entity_Define(&parse->toolkit->markupEntities, values.reference.c_str(), values.string.c_str());
        return;
    }
    Widget* under = parse->levels.back().children;
    if (!under) {
        parse->levels.push_back({nullptr, nullptr});
        return;
    }
    Widget* widget = Widget_AddChild(under, element.kind);
    widget->id = values.id;
    widget->data = MakeRecord(element.kind, values);
    Layout_PlaceWidget(parse->toolkit, widget);
    if (!parse->first && parse->levels.size() == 1) parse->first = widget;
    parse->levels.push_back({widget, element.container ? widget : nullptr});
}

void CloseElement(FormParse* parse, const ElementRule& element) {
    if (element.role == ElementRole::Conditional) {
        // One flag, no stack: an inner close re-activates the outer section too.
        parse->active = true;
        ++parse->closes;
        return;
    }
    if (!parse->active) return;
    ++parse->closes;
    if (element.role == ElementRole::Entity) return;
    if (parse->levels.size() <= 1) return;
    const Level level = parse->levels.back();
    parse->levels.pop_back();
    if (level.widget) FinishWidget(level.widget);
}

void OnTag(void* user, const MarkupTag& tag) {
    auto* parse = static_cast<FormParse*>(user);
    const ElementRule* element = FindElement(tag.name);
    if (!element) return;
    if (tag.closing) {
        CloseElement(parse, *element);
        return;
    }
    OpenElement(parse, *element, tag);
    if (tag.selfClosing) CloseElement(parse, *element);
}

const char* LookUp(void* user, std::string_view reference) {
    return Toolkit_LookupEntity(static_cast<const FormParse*>(user)->toolkit, reference);
}

}  // namespace

Widget* Form_LoadText(Toolkit* toolkit, const char* name, const uint8_t* data, size_t size, Widget* parent) {
    if (!toolkit) return nullptr;
    FormParse parse{toolkit, {}};
    parse.levels.push_back({parent ? parent : toolkit->root.get(), parent ? parent : toolkit->root.get()});
    // The parse state carries the toolkit, so one pointer serves both hooks;
    // ENTITY tags change the tables that later references are looked up in.
    MarkupReaderHooks hooks;
    hooks.lookup = LookUp;
    hooks.tag = OnTag;
    hooks.user = &parse;
    Markup_Read(data, size, hooks);
    if (parse.opens != parse.closes) std::printf(kMarkupUnbalancedMessage, name ? name : "");
    return parse.first;
}

Widget* Form_Load(Toolkit* toolkit, const char* resourceName, Widget* parent) {
    const std::vector<uint8_t> data = Resources_LoadWhole(toolkit, resourceName);
    if (data.empty()) return nullptr;
    return Form_LoadText(toolkit, resourceName, data.data(), data.size(), parent);
}
