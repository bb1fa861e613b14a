// Network Speed > Visibility: where the module shows, and the apps it stays away from.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMAppPicker.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMNetworkSpeedVisibilityPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMNetworkSpeedVisibilityPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/NetworkSpeedVisibility",
        .domain = NimbraDomains::identifier(".networkspeed"),
        .rules = NIMModulePageKinds::visibility(8),
        .actions = {
            {"selectBlackListedApps", NIMAppPicker::action(NimbraDomains::blackListedApps(".networkspeed"), "blackListedApps", NIMAppPicker::Limit::AnyNumber)},
        },
    };
    return page;
}
