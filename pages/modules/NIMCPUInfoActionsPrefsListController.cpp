// CPU Info > Actions: what a double tap or a long press on the module does.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMAppPicker.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMCPUInfoActionsPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMCPUInfoActionsPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/CPUInfoActions",
        .domain = NimbraDomains::identifier(".cpuinfo"),
        .rules = NIMModulePageKinds::actions(),
        .actions = {
            {"selectDoubleTapApp", NIMAppPicker::action(NimbraDomains::gestureApps(".cpuinfo"), "doubleTapApp", NIMAppPicker::Limit::SingleApp)},
            {"selectHoldApp", NIMAppPicker::action(NimbraDomains::gestureApps(".cpuinfo"), "holdApp", NIMAppPicker::Limit::SingleApp)},
        },
    };
    return page;
}
