// Battery Line > Visibility: where the line shows, and the apps it stays away from.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMAppPicker.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMBatteryLineVisibilityPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMBatteryLineVisibilityPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/BatteryLineVisibility",
        .domain = NimbraDomains::identifier(".batteryline"),
        .rules = NIMModulePageKinds::visibility(8),
        .actions = {
            {"selectBlackListedApps", NIMAppPicker::action(NimbraDomains::blackListedApps(".batteryline"), "blackListedApps", NIMAppPicker::Limit::AnyNumber)},
        },
    };
    return page;
}
