// Building and searching the widget tree.
#include "ui/Widget.h"

#include <algorithm>

Widget* Widget_FindById(Widget* start, uint32_t id) {
    if (!start) return nullptr;
    // An explicit stack: forms nest deeply enough that recursion is not worth the risk.
    std::vector<Widget*> pending{start};
    while (!pending.empty()) {
        Widget* widget = pending.back();
        pending.pop_back();
        if (widget->id == id) return widget;
        for (auto child = widget->children.rbegin(); child != widget->children.rend(); ++child)
            pending.push_back(child->get());
    }
    return nullptr;
}

Widget* Widget_AddChild(Widget* parent, uint32_t type) {
    auto child = std::make_unique<Widget>();
    child->type = type;
    child->parent = parent;
    Widget* raw = child.get();
    if (parent) {
        parent->children.push_back(std::move(child));
        return raw;
    }
    // A widget without a parent has no owner in the tree: the caller takes it.
    return child.release();
}

void Widget_Destroy(Widget* child) {
    if (!child) return;
    Widget* parent = child->parent;
    if (!parent) {
        delete child;
        return;
    }
    auto& siblings = parent->children;
    siblings.erase(std::remove_if(siblings.begin(), siblings.end(),
                                  [child](const std::unique_ptr<Widget>& w) { return w.get() == child; }),
                   siblings.end());
}
