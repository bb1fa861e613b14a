// RAM Info > Visibility: where the module shows, and the apps it stays away from.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMAppPicker.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMRAMInfoVisibilityPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMRAMInfoVisibilityPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/RAMInfoVisibility",
        .domain = NimbraDomains::identifier(".raminfo"),
        .rules = NIMModulePageKinds::visibility(7),
        .actions = {
            {"selectBlackListedApps", NIMAppPicker::action(NimbraDomains::blackListedApps(".raminfo"), "blackListedApps", NIMAppPicker::Limit::AnyNumber)},
        },
    };
    return page;
}
