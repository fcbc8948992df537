// Forms and the modal forms drawn over them.
#include "ui/widgets/Form.h"

#include "ui/Theme.h"
#include "ui/Toolkit.h"
#include "ui/Toolkit_Dispatch.h"
#include "ui/draw/Draw_Rect.h"
#include "ui/draw/Draw_RoundRect.h"
#include "ui/widgets/Widget_Paint.h"

#include <algorithm>

namespace {

// A child that fills all of its parent with an opaque background makes the
// parent's own fill wasted work: at full HD each layer of it costs about a millisecond.
bool CoveredByChild(const Widget* widget) {
    for (const auto& child : widget->children) {
        if (child->x != 0 || child->y != 0 || child->width != kUnitsWhole || child->height != kUnitsWhole)
            continue;
        if (child->type == kWidgetForm && !Widget_Record<ModalFormRecord>(child.get())) return true;
        const auto* layout = Widget_Record<LayoutRecord>(child.get());
        if (layout && layout->fillBackground) return true;
    }
    return false;
}

}  // namespace

int Form_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event) {
    if (event->code == kEventResized) {
        auto* modal = Widget_Record<ModalFormRecord>(widget);
        if (modal && modal->relayout) modal->relayout(toolkit, widget);
        return 1;
    }
    if (event->code != kEventDraw) return 0;
    if (CoveredByChild(widget)) return 1;
    WidgetPaint paint = Widget_BeginPaint(toolkit, widget);
    Draw_FillRect(*paint.surface, paint.rect, toolkit->background);
    return 1;
}

void Widget_SetPixelRect(const Toolkit* toolkit, Widget* widget, int32_t x, int32_t y, int32_t width,
                         int32_t height) {
    PixelRect parent;
    if (widget->parent) {
        parent = Widget_PixelRect(toolkit, widget->parent);
    } else {
        parent.width = static_cast<int32_t>(toolkit->screenWidth);
        parent.height = static_cast<int32_t>(toolkit->screenHeight);
    }
    if (parent.width <= 0 || parent.height <= 0) return;
    // Rounded up, so that converting back to pixels gives the edges asked for.
    auto units = [](int64_t pixels, int64_t whole) {
        return static_cast<uint32_t>(
            std::clamp<int64_t>((pixels * kUnitsWhole + whole - 1) / whole, 0, kUnitsWhole));
    };
    widget->x = units(x, parent.width);
    widget->y = units(y, parent.height);
    widget->width = std::min(units(x + width, parent.width) - widget->x, kUnitsWhole - widget->x);
    widget->height = std::min(units(y + height, parent.height) - widget->y, kUnitsWhole - widget->y);
}

Widget* ModalForm_Open(Toolkit* toolkit, std::unique_ptr<WidgetRecord> record, uint32_t id) {
    auto* modal = dynamic_cast<ModalFormRecord*>(record.get());
    if (toolkit->savedCount < kToolkitSavedStates) {
        ToolkitDrawState& state = toolkit->savedStates[toolkit->savedCount++];
        state.form = toolkit->currentForm;
        state.focus = toolkit->input.focus;
        state.screenWidth = toolkit->screenWidth;
        state.screenHeight = toolkit->screenHeight;
        state.flags = 0;
        if (modal) modal->pushed = true;
    }
    Widget* form = Widget_AddChild(toolkit->root.get(), kWidgetForm);
    form->id = id;
    form->data = std::move(record);
    form->width = kUnitsWhole;
    form->height = kUnitsWhole;
    toolkit->currentForm = form;
    // A press that opened the box must not go on to a widget beneath it.
    toolkit->input.capture = nullptr;
    toolkit->input.focus = nullptr;
    Toolkit_Invalidate(toolkit, toolkit->root.get());
    return form;
}

void ModalForm_Close(Toolkit* toolkit, Widget* form) {
    Widget* root = toolkit->root.get();
    if (!form || form->parent != root) return;
    Toolkit_ForgetSubtree(toolkit, form);
    const auto* modal = Widget_Record<ModalFormRecord>(form);
    const bool pushed = modal && modal->pushed;
    auto& children = root->children;
    for (auto it = children.begin(); it != children.end(); ++it) {
        if (it->get() != form) continue;
        form->parent = nullptr;
        toolkit->retired.push_back(std::move(*it));
        children.erase(it);
        break;
    }
    Widget* restoredFocus = nullptr;
    if (pushed && toolkit->savedCount > 0) restoredFocus = toolkit->savedStates[--toolkit->savedCount].focus;
    // The form on top is the newest modal form still open, else the root.
    toolkit->currentForm = root;
    for (auto& child : children)
        if (Widget_Record<ModalFormRecord>(child.get())) toolkit->currentForm = child.get();
    toolkit->input.focus = Widget_IsWithin(restoredFocus, toolkit->currentForm) ? restoredFocus : nullptr;
    Toolkit_Invalidate(toolkit, root);
}

int32_t ModalForm_DrawPanel(Toolkit* toolkit, Widget* form, const char* title) {
    WidgetPaint paint = Widget_BeginPaint(toolkit, form);
    const DrawRect r = paint.rect;
    const float radius = static_cast<float>(std::max(6, toolkit->minimalObjectSizeY / 5));
    auto* modal = Widget_Record<ModalFormRecord>(form);
    // The card, its border and a title band a shade lighter.
    const int32_t band = paint.textHeight * 2 + 4;
    Draw_FillRoundRect(*paint.surface, r, radius, theme::kBorderStrong);
    Draw_FillRoundRect(*paint.surface, Paint_Inset(r, 1), radius - 1, modal ? modal->panel : theme::kPanel);
    {
        ClipScope top(*paint.surface, {r.x, r.y, r.width, band});
        Draw_FillRoundRect(*paint.surface, Paint_Inset(r, 1), radius - 1, theme::kControl);
    }
    Draw_FillRect(*paint.surface, {r.x + 1, r.y + band, r.width - 2, 1}, theme::kBorder);
    if (title)
        Paint_Text(paint, {r.x, r.y, r.width, band}, title, kAlignLeft, theme::kText, paint.textHeight);
    return band;
}
