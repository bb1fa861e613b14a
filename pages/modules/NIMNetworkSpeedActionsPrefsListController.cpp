// Network Speed > Actions: what a double tap or a long press on the module does.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMAppPicker.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMNetworkSpeedActionsPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMNetworkSpeedActionsPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/NetworkSpeedActions",
        .domain = NimbraDomains::identifier(".networkspeed"),
        .rules = NIMModulePageKinds::actions(),
        .actions = {
            {"selectDoubleTapApp", NIMAppPicker::action(NimbraDomains::gestureApps(".networkspeed"), "doubleTapApp", NIMAppPicker::Limit::SingleApp)},
            {"selectHoldApp", NIMAppPicker::action(NimbraDomains::gestureApps(".networkspeed"), "holdApp", NIMAppPicker::Limit::SingleApp)},
        },
    };
    return page;
}
