// Building, laying out, drawing and closing message boxes.
#include "ui/MessageBox.h"

#include "ui/Entities.h"
#include "ui/Theme.h"
#include "ui/Toolkit.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/WidgetKinds.h"
#include "ui/draw/Draw_Shapes.h"
#include "ui/widgets/Button.h"
#include "ui/widgets/Form.h"
#include "ui/widgets/Widget_Paint.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>

namespace {

// One zeroed 96-byte record per button.
struct MessageBoxButton {
    Widget* widget = nullptr;
    uint32_t index = 0;
    uint8_t reserved[84] = {};
};
static_assert(sizeof(MessageBoxButton) == 96);

struct MessageBoxRecord : ModalFormRecord {
    uint8_t shown = 1;
    uint32_t framebufferWidth = 0;
    uint32_t framebufferHeight = 0;
    MessageBoxCallback callback = nullptr;
    void* user = nullptr;
    std::string text;
    std::string title;
    uint32_t buttonCount = 0;
    std::vector<MessageBoxButton> buttons;
    Widget* icon = nullptr;
    Widget* label = nullptr;
    Widget* row = nullptr;
    bool drawnIcon = false;  // icon type 4
};

constexpr size_t kMaxReferenceLength = 64;
constexpr int kMaxExpansions = 256;  // a reference that expands to itself stops here

int32_t LineStep(int32_t textHeight) {
    return textHeight + (textHeight + 3) / 4;
}

// Box geometry for the screen and the text: see Layout for the parts.
void Layout(Toolkit* toolkit, Widget* box) {
    auto* record = Widget_Record<MessageBoxRecord>(box);
    if (!record) return;
    const int32_t sw = static_cast<int32_t>(toolkit->screenWidth),
                  sh = static_cast<int32_t>(toolkit->screenHeight);
    const int32_t m = toolkit->minimalObjectSizeY;
    const int32_t th = std::max(Toolkit_TextHeight(toolkit), 6);
    const int32_t pad = std::max(6, m / 2);
    const int32_t band = th * 2 + 4;
    const int32_t buttonHeight = std::max(Toolkit_MetricPixels(toolkit, kEntityButtonSize), th * 2 + 6);
    const int32_t iconSide = record->icon || record->drawnIcon ? std::max(buttonHeight * 3 / 2, th * 3) : 0;
    // Wide enough for the longest answer on a line of its own, where the screen allows.
    int32_t widest = 0;
    for (const MessageBoxButton& b : record->buttons)
        if (const auto* button = Widget_Record<ButtonRecord>(b.widget); button && toolkit->font)
            widest = std::max(widest, Font_MeasureText(*toolkit->font, th, button->text).width);
    const int32_t width = std::min(sw - 2 * pad, std::max({sw / 3, 12 * m, widest + 2 * th + 2 * pad}));
    // The label keeps an inset on both sides (see Label.cpp): wrap as it will.
    const int32_t textWidth = width - 3 * pad - iconSide - 2 * std::max(2, th / 3);
    int32_t lines = 1;
    if (toolkit->font)
        lines = std::max<int32_t>(
            1, static_cast<int32_t>(Font_WrapText(*toolkit->font, th, record->text, textWidth).size()));
    const int32_t textHeight = lines * LineStep(th);
    const int32_t content = std::max(iconSide, textHeight);
    // Answers that are whole sentences do not fit side by side: then each
    // takes a line of its own, so that none is cut.
    const int32_t rowWidth = width - 2 * pad + 4;
    const size_t n = std::max<size_t>(record->buttons.size(), 1);
    const bool stacked = widest + 2 * th > rowWidth / int32_t(n);
    const int32_t rowHeight =
        stacked ? int32_t(n) * buttonHeight + (int32_t(n) - 1) * (pad / 2) : buttonHeight;
    const int32_t height = std::min(sh - 2 * pad, band + pad + content + pad + rowHeight + pad);
    const int32_t x = (sw - width) / 2, y = (sh - height) / 2;

    Widget_SetPixelRect(toolkit, box, x, y, width, height);
    record->geometry.topLeftX = static_cast<int32_t>(box->x);
    record->geometry.topLeftY = static_cast<int32_t>(box->y);
    record->geometry.bottomRightX = static_cast<int32_t>(box->x + box->width);
    record->geometry.bottomRightY = static_cast<int32_t>(box->y + box->height);
    record->framebufferWidth = toolkit->screenWidth;
    record->framebufferHeight = toolkit->screenHeight;
    const int32_t top = band + pad;
    if (record->icon)
        Widget_SetPixelRect(toolkit, record->icon, pad, top + (content - iconSide) / 2, iconSide, iconSide);
    const int32_t textX = pad + iconSide + (iconSide ? pad : 0);
    Widget_SetPixelRect(toolkit, record->label, textX, top + (content - textHeight) / 2, width - textX - pad,
                        textHeight);
    Widget_SetPixelRect(toolkit, record->row, pad - 2, height - pad - rowHeight, rowWidth, rowHeight);
    // The buttons share the row (or, stacked, its height) equally: each takes
    // 32768 / n of what is left, n being the buttons still to place, so n
    // cells fill the row exactly.
    uint32_t left = kUnitsWhole, at = 0;
    for (size_t i = 0; i < record->buttons.size(); ++i) {
        Widget* button = record->buttons[i].widget;
        const uint32_t share = left / static_cast<uint32_t>(record->buttons.size() - i);
        button->x = stacked ? 0 : at;
        button->y = stacked ? at : 0;
        button->width = stacked ? kUnitsWhole : share;
        button->height = stacked ? share : kUnitsWhole;
        at += share;
        left -= share;
    }
}

// The icon drawn by code (type 4): a ring with a check mark.
int DrawnIcon_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event) {
    if (event->code != kEventDraw) return 0;
    WidgetPaint paint = Widget_BeginPaint(toolkit, widget);
    const float r = static_cast<float>(std::min(paint.rect.width, paint.rect.height)) * 0.45f;
    const float cx = static_cast<float>(paint.rect.x) + static_cast<float>(paint.rect.width) * 0.5f;
    const float cy = static_cast<float>(paint.rect.y) + static_cast<float>(paint.rect.height) * 0.5f;
    const float w = std::max(1.5f, r * 0.14f);
    Draw_StrokeCircle(*paint.surface, cx, cy, r - w, w, theme::kAccent);
    Draw_Line(*paint.surface, cx - r * 0.4f, cy, cx - r * 0.1f, cy + r * 0.32f, w, theme::kText);
    Draw_Line(*paint.surface, cx - r * 0.1f, cy + r * 0.32f, cx + r * 0.45f, cy - r * 0.35f, w, theme::kText);
    return 1;
}

int Box_Handle(Toolkit* toolkit, Widget* box, const WidgetEvent* event) {
    auto* record = Widget_Record<MessageBoxRecord>(box);
    if (!record) return 0;
    if (event->code == kEventDraw) {
        ModalForm_DrawPanel(toolkit, box, record->title.c_str());
        return 1;
    }
    if (event->code == kEventResized) {
        Layout(toolkit, box);
        return 1;
    }
    return 0;
}

void OnButton(Toolkit* toolkit, Widget* button, void* user) {
    Widget* box = static_cast<Widget*>(user);
    auto* record = Widget_Record<MessageBoxRecord>(box);
    if (!record || !record->shown) return;
    uint32_t index = 0;
    for (const MessageBoxButton& b : record->buttons)
        if (b.widget == button) index = b.index;
    record->shown = 0;
    const MessageBoxCallback callback = record->callback;
    void* callbackUser = record->user;
    ModalForm_Close(toolkit, box);
    if (callback) callback(toolkit, index, callbackUser);
}

std::vector<std::string> Labels(uint32_t count, va_list args) {
    std::vector<std::string> labels;
    for (uint32_t i = 0; i < count; ++i) {
        const char* label = va_arg(args, const char*);
        labels.emplace_back(label ? label : "");
    }
    return labels;
}

}  // namespace

std::string Toolkit_ExpandText(const Toolkit* toolkit, const std::string& text) {
    std::string out = text;
    int expansions = 0;
    for (size_t at = 0; at < out.size() && expansions < kMaxExpansions;) {
        if (out[at] != '&') {
            ++at;
            continue;
        }
        const size_t end = out.find(';', at);
        if (end == std::string::npos) break;  // no reference can complete after this point
        if (end - at > kMaxReferenceLength) {
            // A plain "&" in the text: references after it still expand.
            ++at;
            continue;
        }
        const char* value = Toolkit_LookupEntity(toolkit, std::string_view(out).substr(at, end - at + 1));
        if (!value) {
            ++at;
            continue;
        }
        out.replace(at, end - at + 1, value);
        ++expansions;
    }
    Entity_DecodeCharacters(&out);
    return out;
}

const char* MessageBox_IconName(uint32_t iconType) {
    switch (iconType) {
        case kMessageBoxWarning:
            return kIconWarning;
        case kMessageBoxInformation:
            return kIconInformation;
        case kMessageBoxError:
            return kIconError;
        case kMessageBoxSuccess:
            return kIconSuccess;
        case kMessageBoxDrawn:
            return nullptr;
        default:
            return kIconInformation;
    }
}

Widget* MessageBox_ShowLabels(Toolkit* toolkit, const char* title, const char* text, const char* icon,
                              MessageBoxCallback callback, void* user,
                              const std::vector<std::string>& labels) {
    auto owned = std::make_unique<MessageBoxRecord>();
    MessageBoxRecord* record = owned.get();
    record->panel = theme::kPanel;
    record->callback = callback;
    record->user = user;
    record->title = title ? title : "";
    record->text = Toolkit_ExpandText(toolkit, text ? text : "");
    record->buttonCount = static_cast<uint32_t>(labels.size());
    record->buttons.resize(labels.size());
    record->drawnIcon = icon == nullptr;
    record->relayout = Layout;
    // The identifier is the first four characters of the title; a shorter title gives none.
    const uint32_t id = record->title.size() >= 4 ? Widget_PackId(record->title.c_str()) : 0;
    Widget* box = ModalForm_Open(toolkit, std::move(owned), id);
    box->handler = Box_Handle;

    Widget* iconWidget = Widget_AddChild(box, icon ? kWidgetBitmap : kWidgetCodeBitmap);
    if (icon) {
        auto bitmap = std::make_unique<BitmapRecord>();
        bitmap->resource = icon;
        bitmap->fillMode = kFillAutoFit;
        iconWidget->data = std::move(bitmap);
    } else {
        iconWidget->handler = DrawnIcon_Handle;
    }
    record->icon = iconWidget;
    record->label = Widget_AddChild(box, kWidgetLabel);
    auto label = std::make_unique<LabelRecord>();
    label->text = record->text;
    label->align = kAlignLeft;
    record->label->data = std::move(label);
    record->row = Widget_AddChild(box, kWidgetLayout);
    record->row->data = std::make_unique<LayoutRecord>();
    for (size_t i = 0; i < labels.size(); ++i) {
        Widget* button = Widget_AddChild(record->row, kWidgetButton);
        auto b = std::make_unique<ButtonRecord>();
        b->text = Toolkit_ExpandText(toolkit, labels[i]);
        b->rounded = kRoundedTopLeft | kRoundedTopRight | kRoundedBottomLeft | kRoundedBottomRight;
        b->onPress = OnButton;
        b->user = box;
        button->data = std::move(b);
        record->buttons[i].widget = button;
        record->buttons[i].index = static_cast<uint32_t>(i);
    }
    Layout(toolkit, box);
    // The last button (usually the cautious one) answers Enter.
    if (!record->buttons.empty()) toolkit->input.focus = record->buttons.back().widget;
    return box;
}

Widget* MessageBox_Show(Toolkit* toolkit, const char* title, const char* text, uint32_t iconType,
                        MessageBoxCallback callback, void* user, uint32_t buttonCount, ...) {
    va_list args;
    va_start(args, buttonCount);
    const std::vector<std::string> labels = Labels(buttonCount, args);
    va_end(args);
    return MessageBox_ShowLabels(toolkit, title, text, MessageBox_IconName(iconType), callback, user, labels);
}

Widget* MessageBox_ShowAlert(Toolkit* toolkit, const char* title, const char* text,
                             MessageBoxCallback callback, void* user, uint32_t buttonCount, ...) {
    va_list args;
    va_start(args, buttonCount);
    const std::vector<std::string> labels = Labels(buttonCount, args);
    va_end(args);
    return MessageBox_ShowLabels(toolkit, title, text, kIconAlert, callback, user, labels);
}

std::vector<Widget*> MessageBox_Buttons(Widget* box) {
    std::vector<Widget*> out;
    if (const auto* record = Widget_Record<MessageBoxRecord>(box))
        for (const MessageBoxButton& b : record->buttons) out.push_back(b.widget);
    return out;
}

const char* MessageBox_Title(const Widget* box) {
    const auto* record = Widget_Record<MessageBoxRecord>(box);
    return record ? record->title.c_str() : nullptr;
}
