// The progress dialog.
#include "ui/ProgressDialog.h"

#include "ui/Theme.h"
#include "ui/Toolkit.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/WidgetKinds.h"
#include "ui/draw/Draw_Rect.h"
#include "ui/draw/Draw_RoundRect.h"
#include "ui/widgets/Button.h"
#include "ui/widgets/Form.h"
#include "ui/widgets/Label.h"
#include "ui/widgets/Widget_Paint.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>

namespace {

struct ProgressRecord : ModalFormRecord {
    std::atomic<bool> cancel{false};
    std::atomic<int> percent{0};
    int shownPercent = -1;
    std::mutex stageLock;  // the kernel writes the stage from its thread
    std::string stage;
    bool stageChanged = false;
    Widget* text = nullptr;
    Widget* bar = nullptr;
    Widget* button = nullptr;
};

void Report(void* context, const char* stage, int percent) {
    auto* record = static_cast<ProgressRecord*>(context);
    record->percent.store(std::clamp(percent, 0, 100), std::memory_order_relaxed);
    if (stage) {
        std::lock_guard<std::mutex> lock(record->stageLock);
        if (record->stage != stage) record->stage = stage, record->stageChanged = true;
    }
}

int Bar_Handle(Toolkit* toolkit, Widget* bar, const WidgetEvent* event) {
    if (event->code != kEventDraw) return 0;
    const auto* record = Widget_Record<ProgressRecord>(bar->parent);
    WidgetPaint paint = Widget_BeginPaint(toolkit, bar);
    const DrawRect r = paint.rect;
    const float radius = static_cast<float>(r.height) * 0.5f;
    Draw_FillRoundRect(*paint.surface, r, radius, theme::kWell);
    const int percent = record ? record->percent.load(std::memory_order_relaxed) : 0;
    const int32_t filled = static_cast<int32_t>(int64_t{r.width} * percent / 100);
    if (filled > 0) {
        ClipScope clip(*paint.surface, {r.x, r.y, filled, r.height});
        Draw_FillRoundRectGradient(*paint.surface, r, radius, theme::kAccent, theme::kAccentDim);
    }
    Draw_StrokeRoundRect(*paint.surface, r, radius, 1.0f, theme::kBorder);
    return 1;
}

void Layout(Toolkit* toolkit, Widget* dialog) {
    auto* record = Widget_Record<ProgressRecord>(dialog);
    if (!record) return;
    const int32_t sw = static_cast<int32_t>(toolkit->screenWidth),
                  sh = static_cast<int32_t>(toolkit->screenHeight);
    const int32_t m = toolkit->minimalObjectSizeY;
    const int32_t th = std::max(Toolkit_TextHeight(toolkit), 6);
    const int32_t pad = std::max(6, m / 2);
    const int32_t band = th * 2 + 4;
    const int32_t buttonHeight = std::max(m * 3 / 4, th * 2 + 6);
    const int32_t barHeight = std::max(6, th * 2 / 3);
    const int32_t width = std::min(sw - 2 * pad, std::max(sw / 3, 12 * m));
    const int32_t line = th + (th + 3) / 4;
    const int32_t height = band + pad + line + pad / 2 + barHeight + pad + buttonHeight + pad;
    Widget_SetPixelRect(toolkit, dialog, (sw - width) / 2, (sh - height) / 2, width, height);
    record->geometry.topLeftX = static_cast<int32_t>(dialog->x);
    record->geometry.topLeftY = static_cast<int32_t>(dialog->y);
    record->geometry.bottomRightX = static_cast<int32_t>(dialog->x + dialog->width);
    record->geometry.bottomRightY = static_cast<int32_t>(dialog->y + dialog->height);
    Widget_SetPixelRect(toolkit, record->text, pad, band + pad, width - 2 * pad, line);
    Widget_SetPixelRect(toolkit, record->bar, pad, band + pad + line + pad / 2, width - 2 * pad, barHeight);
    const int32_t buttonWidth = std::min(width - 2 * pad, std::max(width / 3, 4 * m));
    Widget_SetPixelRect(toolkit, record->button, width - pad - buttonWidth + 2, height - pad - buttonHeight,
                        buttonWidth, buttonHeight);
}

int Dialog_Handle(Toolkit* toolkit, Widget* dialog, const WidgetEvent* event) {
    auto* record = Widget_Record<ProgressRecord>(dialog);
    if (!record) return 0;
    switch (event->code) {
        case kEventDraw:
            ModalForm_DrawPanel(toolkit, dialog, kProgressTitle);
            return 1;
        case kEventResized:
            Layout(toolkit, dialog);
            return 1;
        case kEventTick: {
            // What the kernel reported since the last tick.
            const int percent = record->percent.load(std::memory_order_relaxed);
            if (percent != record->shownPercent) {
                record->shownPercent = percent;
                Toolkit_Invalidate(toolkit, record->bar);
            }
            std::string stage;
            {
                std::lock_guard<std::mutex> lock(record->stageLock);
                if (record->stageChanged) stage = record->stage, record->stageChanged = false;
            }
            if (!stage.empty()) Label_SetText(toolkit, record->text, stage);
            return 1;
        }
        default:
            return 0;
    }
}

void OnCancel(Toolkit* toolkit, Widget* button, void* user) {
    auto* record = Widget_Record<ProgressRecord>(static_cast<Widget*>(user));
    if (!record) return;
    record->cancel.store(true, std::memory_order_relaxed);
    // Pressed once is enough: the operation stops at its next check.
    Button_SetEnabled(toolkit, button, false);
}

}  // namespace

Widget* ProgressDialog_Show(Toolkit* toolkit, const char* text) {
    auto owned = std::make_unique<ProgressRecord>();
    ProgressRecord* record = owned.get();
    record->panel = theme::kPanel;
    record->relayout = Layout;
    Widget* dialog = ModalForm_Open(toolkit, std::move(owned), Widget_PackId(kProgressTitle));
    dialog->handler = Dialog_Handle;
    record->text = Widget_AddChild(dialog, kWidgetLabel);
    auto label = std::make_unique<LabelRecord>();
    label->text = text ? text : "";
    record->text->data = std::move(label);
    record->bar = Widget_AddChild(dialog, kWidgetLabel);
    record->bar->handler = Bar_Handle;
    record->bar->data = std::make_unique<LabelRecord>();
    record->button = Widget_AddChild(dialog, kWidgetButton);
    auto button = std::make_unique<ButtonRecord>();
    button->text = kProgressCancel;
    button->rounded = kRoundedTopLeft | kRoundedTopRight | kRoundedBottomLeft | kRoundedBottomRight;
    button->onPress = OnCancel;
    button->user = dialog;
    record->button->data = std::move(button);
    Layout(toolkit, dialog);
    toolkit->input.focus = record->button;
    return dialog;
}

KernelControl ProgressDialog_Control(Widget* dialog) {
    KernelControl control;
    if (auto* record = Widget_Record<ProgressRecord>(dialog)) {
        control.cancel = &record->cancel;
        control.progress = Report;
        control.context = record;
    }
    return control;
}

void ProgressDialog_SetProgress(Toolkit* toolkit, Widget* dialog, int percent) {
    auto* record = Widget_Record<ProgressRecord>(dialog);
    if (!record) return;
    record->percent.store(std::clamp(percent, 0, 100), std::memory_order_relaxed);
    record->shownPercent = record->percent.load(std::memory_order_relaxed);
    Toolkit_Invalidate(toolkit, record->bar);
}

int ProgressDialog_Percent(const Widget* dialog) {
    const auto* record = Widget_Record<ProgressRecord>(dialog);
    return record ? record->percent.load(std::memory_order_relaxed) : 0;
}

bool ProgressDialog_Cancelled(const Widget* dialog) {
    const auto* record = Widget_Record<ProgressRecord>(dialog);
    return record && record->cancel.load(std::memory_order_relaxed);
}

Widget* ProgressDialog_CancelButton(Widget* dialog) {
    const auto* record = Widget_Record<ProgressRecord>(dialog);
    return record ? record->button : nullptr;
}

void ProgressDialog_Close(Toolkit* toolkit, Widget* dialog) {
    ModalForm_Close(toolkit, dialog);
}
