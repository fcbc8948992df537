#include "ui/Toolkit_Create.h"

#include "ui/Entities.h"
#include "ui/Theme.h"
#include "ui/WidgetKinds.h"
#include "ui/archive/Resources_Open.h"
#include "ui/widgets/WidgetKinds_Table.h"

std::unique_ptr<Toolkit> Toolkit_CreateBare() {
    auto toolkit = std::make_unique<Toolkit>();
    toolkit->kinds = WidgetKinds_Table();
    toolkit->root = std::make_unique<Widget>();
    toolkit->root->type = kWidgetDrawingArea;
    toolkit->root->width = kUnitsWhole;
    toolkit->root->height = kUnitsWhole;
    toolkit->currentForm = toolkit->root.get();
    Theme_Apply(toolkit.get());
    Toolkit_DefineSystemEntities(toolkit.get());
    return toolkit;
}

std::unique_ptr<Toolkit> Toolkit_Create() {
    return Toolkit_CreateWithArchive(Resources_Open());
}

std::unique_ptr<Toolkit> Toolkit_CreateWithArchive(std::unique_ptr<ResourceArchive> archive) {
    std::unique_ptr<Toolkit> toolkit = Toolkit_CreateBare();
    toolkit->archive = std::move(archive);
    Toolkit_MeasureScreen(toolkit.get());
    Toolkit_MeasureDisplayScale(toolkit.get());
    Toolkit_SetMetricsFromScreen(toolkit.get());
    Toolkit_LoadFont(toolkit.get());
    return toolkit;
}
