#include "ui/widgets/WidgetKinds_Table.h"

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

bool Always(const Widget*) {
    return true;
}

constexpr WidgetKindRow kKinds[] = {
    {kWidgetLayout, LayoutWidget_Handle, nullptr},
    {kWidgetButton, Button_Handle, Always},
    {kWidgetLabel, Label_Handle, nullptr},
    {kWidgetField, Field_Handle, Always},
    {kWidgetFieldMulti, FieldMulti_Handle, Always},
    {kWidgetBitmap, Bitmap_Handle, nullptr},
    {kWidgetList, List_Handle, Always},
    {kWidgetDrawingArea, Form_Handle, nullptr},
    {kWidgetSelector, Selector_Handle, Always},
    {kWidgetLevelSetter, LevelSetter_Handle, Always},
    {kWidgetImageView, ImageView_Handle, Always},
    {kWidgetHistogram, Histogram_Handle, nullptr},
    {kWidgetVirtualKeyboard, VirtualKeyboard_Handle, nullptr},
    {kWidgetApplet, Applet_Handle, nullptr},
    // Until a callback is bound it lets the pointer through to what lies beneath.
    {kWidgetGestureArea, GestureArea_Handle, GestureArea_TakesPointer},
    {kWidgetCodeBitmap, Bitmap_Handle, nullptr},
    {kWidgetForm, Form_Handle, nullptr},
};

}  // namespace

std::span<const WidgetKindRow> WidgetKinds_Table() {
    return kKinds;
}
