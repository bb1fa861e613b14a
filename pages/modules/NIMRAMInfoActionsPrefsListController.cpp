// RAM Info > Actions: what a double tap or a long press on the module does.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMAppPicker.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMRAMInfoActionsPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMRAMInfoActionsPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/RAMInfoActions",
        .domain = NimbraDomains::identifier(".raminfo"),
        .rules = NIMModulePageKinds::actions(),
        .actions = {
            {"selectDoubleTapApp", NIMAppPicker::action(NimbraDomains::gestureApps(".raminfo"), "doubleTapApp", NIMAppPicker::Limit::SingleApp)},
            {"selectHoldApp", NIMAppPicker::action(NimbraDomains::gestureApps(".raminfo"), "holdApp", NIMAppPicker::Limit::SingleApp)},
        },
    };
    return page;
}
