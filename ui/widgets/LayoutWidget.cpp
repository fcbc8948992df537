// Drawing of a layout: the panel behind its cells when FillBackground is set.
#include "ui/widgets/LayoutWidget.h"

#include "ui/Theme.h"
#include "ui/WidgetKinds.h"
#include "ui/draw/Draw_Rect.h"
#include "ui/widgets/Widget_Paint.h"

int LayoutWidget_Handle(Toolkit* toolkit, Widget* widget, const WidgetEvent* event) {
    if (event->code != kEventDraw) return 0;
    const auto* record = Widget_Record<LayoutRecord>(widget);
    if (!record || !record->fillBackground) return 1;
    WidgetPaint paint = Widget_BeginPaint(toolkit, widget);
    Draw_FillRect(*paint.surface, paint.rect, theme::kPanel);
    return 1;
}
