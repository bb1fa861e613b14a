// CPU Info > Visibility: where the module shows, and the apps it stays away from.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMAppPicker.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMCPUInfoVisibilityPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMCPUInfoVisibilityPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/CPUInfoVisibility",
        .domain = NimbraDomains::identifier(".cpuinfo"),
        .rules = NIMModulePageKinds::visibility(7),
        .actions = {
            {"selectBlackListedApps", NIMAppPicker::action(NimbraDomains::blackListedApps(".cpuinfo"), "blackListedApps", NIMAppPicker::Limit::AnyNumber)},
        },
    };
    return page;
}
