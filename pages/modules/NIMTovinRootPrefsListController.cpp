// Tovin: the banner's master switch over its options, a test banner, and the group's resets. The
// settings reset keeps the blacklisted apps.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "frame/PageActions.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMTovinRootPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMTovinRootPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/TovinRoot",
        .domain = NimbraDomains::identifier(".tovin"),
        .rules = NIMModulePageKinds::root(14),
        .actions = {
            {"testNotifications", PageActions::postNotification(NimbraDomains::kTovinTestNotification)},
            {"resetSettings", confirmedReset(groupSettingsReset("Tovin", ".tovin", {}))},
            {"resetColors", confirmedReset(groupColorsReset("Tovin", ".tovin"))},
        },
    };
    return page;
}
