// The table from widget kind to its handler: one explicit row per kind, so
// that what exists is read in one place.
#include "ui/WidgetKinds.h"

#include "ui/widgets/Applet.h"
#include "ui/widgets/Bitmap.h"
#include "ui/widgets/Button.h"
#include "ui/widgets/Field.h"
#include "ui/widgets/FieldMulti.h"
#include "ui/widgets/Form.h"
#include "ui/widgets/GestureArea.h"
#include "ui/widgets/Histogram.h"
#include "ui/widgets/ImageView.h"
#include "ui/widgets/Label.h"
#include "ui/widgets/LayoutWidget.h"
#include "ui/widgets/LevelSetter.h"
#include "ui/widgets/List.h"
#include "ui/widgets/Selector.h"
#include "ui/widgets/VirtualKeyboard.h"

namespace {

struct KindRow {
    uint32_t kind;
    WidgetHandler handler;
};

constexpr KindRow kKinds[] = {
    {kWidgetLayout, LayoutWidget_Handle},
    {kWidgetButton, Button_Handle},
    {kWidgetLabel, Label_Handle},
    {kWidgetField, Field_Handle},
    {kWidgetFieldMulti, FieldMulti_Handle},
    {kWidgetBitmap, Bitmap_Handle},
    {kWidgetList, List_Handle},
    {kWidgetDrawingArea, Form_Handle},
    {kWidgetSelector, Selector_Handle},
    {kWidgetLevelSetter, LevelSetter_Handle},
    {kWidgetImageView, ImageView_Handle},
    {kWidgetHistogram, Histogram_Handle},
    {kWidgetVirtualKeyboard, VirtualKeyboard_Handle},
    {kWidgetApplet, Applet_Handle},
    {kWidgetGestureArea, GestureArea_Handle},
    {kWidgetCodeBitmap, Bitmap_Handle},
    {kWidgetForm, Form_Handle},
};

}  // namespace

WidgetHandler WidgetKinds_Handler(uint32_t kind) {
    for (const KindRow& row : kKinds)
        if (row.kind == kind) return row.handler;
    return nullptr;
}
