// Dispatching the toolkit's events: hit testing, capture, focus, quick keys
// and the redraw of what changed.
#include "ui/Toolkit_Dispatch.h"

#include "host/Host.h"
#include "ui/Layout.h"
#include "ui/Theme.h"
#include "ui/Toolkit.h"
#include "ui/Toolkit_Events.h"
#include "ui/WidgetKinds.h"
#include "ui/draw/Draw_Rect.h"

#include <algorithm>
#include <vector>

namespace {

DrawRect ToDrawRect(const PixelRect& r) {
    return {r.x, r.y, r.width, r.height};
}

DrawRect Union(const DrawRect& a, const DrawRect& b) {
    if (Draw_IsEmpty(a)) return b;
    if (Draw_IsEmpty(b)) return a;
    const int32_t x0 = std::min(a.x, b.x), y0 = std::min(a.y, b.y);
    const int32_t x1 = std::max(a.x + a.width, b.x + b.width), y1 = std::max(a.y + a.height, b.y + b.height);
    return {x0, y0, x1 - x0, y1 - y0};
}

const WidgetKindRow* KindOf(const Toolkit* toolkit, uint32_t kind) {
    for (const WidgetKindRow& row : toolkit->kinds)
        if (row.kind == kind) return &row;
    return nullptr;
}

bool TakesPointer(const Toolkit* toolkit, const Widget* widget) {
    const WidgetKindRow* row = KindOf(toolkit, widget->type);
    return row && row->takesPointer && row->takesPointer(widget);
}

bool IsModal(const Widget* widget) {
    return Widget_Record<ModalFormRecord>(widget) != nullptr;
}

// The colour behind a widget: that of the nearest ancestor that fills its area.
Colour565 BackgroundBehind(const Toolkit* toolkit, const Widget* widget) {
    for (const Widget* w = widget->parent; w; w = w->parent) {
        if (const auto* modal = Widget_Record<ModalFormRecord>(w)) return modal->panel;
        if (const auto* layout = Widget_Record<LayoutRecord>(w); layout && layout->fillBackground)
            return theme::kPanel;
        if (w->type == kWidgetForm || w->type == kWidgetDrawingArea) return toolkit->background;
    }
    return toolkit->background;
}

void DrawTree(Toolkit* toolkit, Widget* widget, const DrawRect& clip) {
    const DrawRect rect = ToDrawRect(Widget_PixelRect(toolkit, widget));
    const DrawRect area = Draw_Intersect(clip, rect);
    if (Draw_IsEmpty(area)) return;
    toolkit->paint = Toolkit_ScreenSurface(toolkit);
    toolkit->paint.clip = area;
    Widget_Send(toolkit, widget, kEventDraw);
    for (auto& child : widget->children) {
        if (IsModal(child.get())) {
            // A modal box dims everything beneath it.
            Surface screen = Toolkit_ScreenSurface(toolkit);
            screen.clip = clip;
            Draw_BlendRect(screen, {0, 0, screen.width, screen.height}, theme::kShade, theme::kShadeAlpha);
        }
        DrawTree(toolkit, child.get(), area);
    }
}

void CollectFocusable(Widget* widget, std::vector<Widget*>* out) {
    if (Widget_IsFocusable(widget)) out->push_back(widget);
    for (auto& child : widget->children) CollectFocusable(child.get(), out);
}

Widget* FindQuickKey(Widget* widget, uint32_t key) {
    const NavigationRecord* nav = nullptr;
    if (auto* b = Widget_Record<ButtonRecord>(widget))
        nav = b->disabled ? nullptr : &b->navigation;
    else if (auto* f = Widget_Record<FieldRecord>(widget))
        nav = &f->navigation;
    else if (auto* m = Widget_Record<FieldMultiRecord>(widget))
        nav = &m->navigation;
    else if (auto* l = Widget_Record<ListRecord>(widget))
        nav = &l->navigation;
    else if (auto* s = Widget_Record<SelectorRecord>(widget))
        nav = &s->navigation;
    else if (auto* y = Widget_Record<LayoutRecord>(widget))
        nav = &y->navigation;
    if (nav && nav->quickKey && static_cast<uint8_t>(nav->quickKey) == key) return widget;
    for (auto& child : widget->children)
        if (Widget* found = FindQuickKey(child.get(), key)) return found;
    return nullptr;
}

void SendTicks(Toolkit* toolkit, Widget* widget, uint32_t ticks) {
    if (widget->type == kWidgetApplet || IsModal(widget)) Widget_Send(toolkit, widget, kEventTick, ticks);
    // Index loop: a tick handler may add children (never remove them).
    for (size_t i = 0; i < widget->children.size(); ++i) SendTicks(toolkit, widget->children[i].get(), ticks);
}

Widget* PointerTarget(Toolkit* toolkit, const ToolkitEvent& e) {
    Widget* root = toolkit->root.get();
    if (e.widget && e.widget != root) return e.widget;
    Widget* top = toolkit->currentForm ? toolkit->currentForm : root;
    return Toolkit_HitTest(toolkit, top, static_cast<int32_t>(e.payload[0]),
                           static_cast<int32_t>(e.payload[1]));
}

void Activate(Toolkit* toolkit, Widget* widget) {
    if (Widget_IsFocusable(widget)) Toolkit_SetFocus(toolkit, widget);
    if (widget->type != kWidgetButton && widget->type != kWidgetSelector) return;
    const PixelRect r = Widget_PixelRect(toolkit, widget);
    const uint32_t cx = static_cast<uint32_t>(r.x + r.width / 2),
                   cy = static_cast<uint32_t>(r.y + r.height / 2);
    Widget_Send(toolkit, widget, kEventPress, cx, cy, 1);
    Widget_Send(toolkit, widget, kEventRelease, cx, cy, 0);
}

void RunEvent(Toolkit* toolkit, const ToolkitEvent& e) {
    ToolkitInput& in = toolkit->input;
    Widget* root = toolkit->root.get();
    switch (e.code) {
        case kEventDraw:
            if (e.widget) Toolkit_DrawWidget(toolkit, e.widget);
            return;
        case kEventResized:
            if (e.widget == root || !e.widget) {
                Layout_Apply(toolkit, root);
                for (size_t i = 0; i < root->children.size(); ++i)
                    Widget_Send(toolkit, root->children[i].get(), kEventResized);
            } else {
                Widget_Send(toolkit, e.widget, kEventResized);
            }
            return;
        case kEventPress: {
            in.pointerDown = true;
            in.pointerX = static_cast<int32_t>(e.payload[0]);
            in.pointerY = static_cast<int32_t>(e.payload[1]);
            Widget* target = PointerTarget(toolkit, e);
            in.capture = target;
            if (!target) return;
            if (Widget_IsFocusable(target)) Toolkit_SetFocus(toolkit, target);
            Widget_Send(toolkit, target, kEventPress, e.payload[0], e.payload[1], e.payload[2]);
            return;
        }
        case kEventDrag:
            in.pointerX = static_cast<int32_t>(e.payload[0]);
            in.pointerY = static_cast<int32_t>(e.payload[1]);
            if (in.capture)
                Widget_Send(toolkit, in.capture, kEventDrag, e.payload[0], e.payload[1], e.payload[2]);
            return;
        case kEventRelease: {
            in.pointerDown = false;
            Widget* target = in.capture;
            in.capture = nullptr;
            if (target) Widget_Send(toolkit, target, kEventRelease, e.payload[0], e.payload[1], e.payload[2]);
            return;
        }
        case kEventCharacter: {
            const uint32_t key = e.payload[0];
            Widget* target = (e.widget && e.widget != root) ? e.widget : in.focus;
            if (target && Widget_Send(toolkit, target, kEventCharacter, key)) return;
            if (key == kKeyTab) {
                Toolkit_FocusNext(toolkit, false);
                return;
            }
            if (Widget* quick = Toolkit_FindQuickKey(toolkit, key)) Activate(toolkit, quick);
            return;
        }
        case kEventTick:
            SendTicks(toolkit, root, e.payload[0]);
            return;
        default:
            if (e.widget) Widget_Send(toolkit, e.widget, e.code, e.payload[0], e.payload[1], e.payload[2]);
            return;
    }
}

}  // namespace

int Widget_Send(Toolkit* toolkit, Widget* widget, uint32_t code, uint32_t payload0, uint32_t payload1,
                uint32_t payload2) {
    if (!widget) return 0;
    WidgetHandler handler = widget->handler;
    if (!handler)
        if (const WidgetKindRow* row = KindOf(toolkit, widget->type)) handler = row->handler;
    if (!handler) return 0;
    WidgetEvent event;
    event.payload[0] = payload0;
    event.payload[1] = payload1;
    event.payload[2] = payload2;
    event.code = code;
    return handler(toolkit, widget, &event);
}

uint32_t Toolkit_Dispatch(Toolkit* toolkit) {
    uint32_t count = 0;
    ToolkitEvent e;
    Widget* lastDrawn = nullptr;
    while (Toolkit_TakeEvent(toolkit, &e)) {
        ++count;
        // Requests to draw the same widget again with nothing in between collapse into one.
        if (e.code == kEventDraw && e.widget && e.widget == lastDrawn) continue;
        RunEvent(toolkit, e);
        lastDrawn = e.code == kEventDraw ? e.widget : nullptr;
    }
    toolkit->retired.clear();
    Toolkit_Present(toolkit);
    return count;
}

void Toolkit_PostPointer(Toolkit* toolkit, uint32_t x, uint32_t y, bool down) {
    bool& was = toolkit->input.postedDown;
    if (down && !was)
        Toolkit_PostEvent(toolkit, toolkit->root.get(), kEventPress, x, y, 1);
    else if (down)
        Toolkit_PostEvent(toolkit, toolkit->root.get(), kEventDrag, x, y, 1);
    else if (was)
        Toolkit_PostEvent(toolkit, toolkit->root.get(), kEventRelease, x, y, 0);
    was = down;
}

void Toolkit_ProcessPendingDraws(Toolkit* toolkit) {
    ToolkitEventRing& ring = toolkit->events;
    // Compacts in place: kept entries slide towards the read end in order.
    const uint32_t count = ring.pending;
    uint32_t kept = 0;
    for (uint32_t k = 0; k < count; ++k) {
        const ToolkitEvent e = ring.entries[(ring.readIndex + k) % kToolkitEventRingSize];
        const bool plainDraw =
            e.code == kEventDraw && e.payload[0] == 0 && e.payload[1] == 0 && e.payload[2] == 0;
        if (!plainDraw) {
            ring.entries[(ring.readIndex + kept++) % kToolkitEventRingSize] = e;
            continue;
        }
        if (e.widget) Toolkit_DrawWidget(toolkit, e.widget);
    }
    ring.pending = kept;
}

void Toolkit_Invalidate(Toolkit* toolkit, Widget* widget) {
    if (toolkit && widget) Toolkit_PostEvent(toolkit, widget, kEventDraw);
}

Surface Toolkit_ScreenSurface(const Toolkit* toolkit) {
    return Draw_MakeSurface(toolkit->framebuffer, static_cast<int32_t>(toolkit->pixelsPerRow),
                            static_cast<int32_t>(toolkit->screenWidth),
                            static_cast<int32_t>(toolkit->screenHeight));
}

void Toolkit_DrawWidget(Toolkit* toolkit, Widget* widget) {
    if (!toolkit || !widget) return;
    if (!toolkit->framebuffer) {
        // No screen yet: the handler still hears the request, with nothing to paint on.
        toolkit->paint = Surface{};
        Widget_Send(toolkit, widget, kEventDraw);
        return;
    }
    Widget* root = toolkit->root.get();
    // Under a modal box, or in a form another one stacked on it covers (a
    // module's form over the main form), a widget drawn alone would paint
    // over what covers it: the whole screen is drawn in order instead.
    const Widget* top = widget;
    while (top->parent && top->parent != root) top = top->parent;
    const bool stackedOver =
        top->parent == root && !root->children.empty() && root->children.back().get() != top;
    if (widget == root || stackedOver ||
        (toolkit->currentForm && toolkit->currentForm != root &&
         !Widget_IsWithin(widget, toolkit->currentForm))) {
        Toolkit_DrawAll(toolkit);
        return;
    }
    // Invisible kinds often span a whole form: clearing their area would wipe it.
    if (widget->type == kWidgetApplet || widget->type == kWidgetGestureArea ||
        widget->type == kWidgetVirtualKeyboard)
        return;
    const Surface screen = Toolkit_ScreenSurface(toolkit);
    const DrawRect rect = Draw_Intersect(screen.clip, ToDrawRect(Widget_PixelRect(toolkit, widget)));
    if (Draw_IsEmpty(rect)) return;
    Draw_FillRect(screen, rect, BackgroundBehind(toolkit, widget));
    DrawTree(toolkit, widget, rect);
    toolkit->input.drawn = true;
    toolkit->input.drawnArea = Union(toolkit->input.drawnArea, rect);
}

void Toolkit_DrawAll(Toolkit* toolkit) {
    if (!toolkit || !toolkit->framebuffer) return;
    const Surface screen = Toolkit_ScreenSurface(toolkit);
    DrawTree(toolkit, toolkit->root.get(), screen.clip);
    toolkit->input.drawn = true;
    toolkit->input.drawnArea = screen.clip;
}

void Toolkit_Present(Toolkit* toolkit) {
    if (!toolkit || !toolkit->input.drawn) return;
    toolkit->input.drawn = false;
    toolkit->input.drawnArea = {};
    Host_Call("video", "Video_Blit", nullptr);
}

Widget* Toolkit_HitTest(Toolkit* toolkit, Widget* from, int32_t x, int32_t y) {
    if (!from) return nullptr;
    const PixelRect r = Widget_PixelRect(toolkit, from);
    if (x < r.x || y < r.y || x >= r.x + r.width || y >= r.y + r.height) return nullptr;
    // Later children lie on top.
    for (auto child = from->children.rbegin(); child != from->children.rend(); ++child)
        if (Widget* hit = Toolkit_HitTest(toolkit, child->get(), x, y)) return hit;
    return TakesPointer(toolkit, from) ? from : nullptr;
}

bool Widget_IsFocusable(const Widget* widget) {
    if (!widget || widget->width == 0 || widget->height == 0) return false;
    switch (widget->type) {
        case kWidgetButton: {
            const auto* b = Widget_Record<ButtonRecord>(widget);
            return b && !b->disabled;
        }
        case kWidgetField:
        case kWidgetFieldMulti:
        case kWidgetList:
        case kWidgetSelector:
        case kWidgetLevelSetter:
            return true;
        default:
            return false;
    }
}

void Toolkit_SetFocus(Toolkit* toolkit, Widget* widget) {
    Widget* old = toolkit->input.focus;
    if (old == widget) return;
    toolkit->input.focus = widget;
    if (old) Toolkit_Invalidate(toolkit, old);
    if (widget) Toolkit_Invalidate(toolkit, widget);
}

void Toolkit_FocusNext(Toolkit* toolkit, bool backwards) {
    std::vector<Widget*> order;
    CollectFocusable(toolkit->currentForm ? toolkit->currentForm : toolkit->root.get(), &order);
    if (order.empty()) return;
    const auto at = std::find(order.begin(), order.end(), toolkit->input.focus);
    size_t next = 0;
    if (at != order.end()) {
        const size_t i = static_cast<size_t>(at - order.begin());
        next = backwards ? (i + order.size() - 1) % order.size() : (i + 1) % order.size();
    } else if (backwards) {
        next = order.size() - 1;
    }
    Toolkit_SetFocus(toolkit, order[next]);
}

Widget* Toolkit_FindQuickKey(Toolkit* toolkit, uint32_t key) {
    if (key == 0) return nullptr;
    return FindQuickKey(toolkit->currentForm ? toolkit->currentForm : toolkit->root.get(), key);
}

bool Widget_IsWithin(const Widget* widget, const Widget* ancestor) {
    for (const Widget* w = widget; w; w = w->parent)
        if (w == ancestor) return true;
    return false;
}

void Toolkit_ForgetSubtree(Toolkit* toolkit, Widget* subtree) {
    ToolkitInput& in = toolkit->input;
    if (Widget_IsWithin(in.capture, subtree)) in.capture = nullptr;
    if (Widget_IsWithin(in.focus, subtree)) in.focus = nullptr;
    ToolkitEventRing& ring = toolkit->events;
    for (uint32_t k = 0; k < ring.pending; ++k) {
        ToolkitEvent& e = ring.entries[(ring.readIndex + k) % kToolkitEventRingSize];
        if (e.widget && Widget_IsWithin(e.widget, subtree)) {
            e.widget = nullptr;
            e.code = 0;
        }
    }
}
