// Tovin > Visibility: the apps whose notifications keep the system's own banner.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMAppPicker.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMTovinVisibilityPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMTovinVisibilityPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/TovinVisibility",
        .domain = NimbraDomains::identifier(".tovin"),
        .rules = {
            when("enableBlackListedApps", Condition::on()).editedBy("blackListSwitch").chain({"blackListSwitchChild"}, "blackListSwitch"),
        },
        .actions = {
            {"selectBlackListedApps", NIMAppPicker::action(NimbraDomains::blackListedApps(".tovin"), "blackListedApps", NIMAppPicker::Limit::AnyNumber)},
        },
    };
    return page;
}
