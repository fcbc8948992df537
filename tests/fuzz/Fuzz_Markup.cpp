// libFuzzer target for the form markup reader and the widget tree it builds:
// the input is read as a form twice (the second time with whatever entities
// the first defined), laid out again for another screen, and searched.
#include "ui/Entities.h"
#include "ui/Layout.h"
#include "ui/Toolkit.h"
#include "ui/Toolkit_Create.h"
#include "ui/Widget.h"
#include "ui/markup/Markup_Form.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    auto toolkit = Toolkit_CreateBare();
    Toolkit_SetScreen(toolkit.get(), 800, 480, 800, nullptr);
    Toolkit_SetMetricsFromScreen(toolkit.get());
    // Unbalanced input prints its message on standard output: run with
    // -close_fd_mask=1 to keep the fuzzer's log readable.
    Widget* first = Form_LoadText(toolkit.get(), "fuzz.xml", data, size, nullptr);
    Form_LoadText(toolkit.get(), "fuzz.xml", data, size, first);
    Toolkit_SetScreen(toolkit.get(), 333, 777, 336, nullptr);
    Layout_Apply(toolkit.get(), toolkit->root.get());
    Widget_FindById(toolkit->root.get(), Widget_PackId("LvS0"));
    return 0;
}
