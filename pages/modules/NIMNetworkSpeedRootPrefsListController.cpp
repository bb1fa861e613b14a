// Network Speed: the module's master switch over its options, and the group's resets.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMNetworkSpeedRootPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMNetworkSpeedRootPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/NetworkSpeedRoot",
        .domain = NimbraDomains::identifier(".networkspeed"),
        .rules = NIMModulePageKinds::root(14),
        .actions = {
            {"resetSettings", confirmedReset(groupSettingsReset("Network Speed", ".networkspeed", {".blackListedApps", ".holdApp", ".doubleTapApp"}))},
            {"resetColors", confirmedReset(groupColorsReset("Network Speed", ".networkspeed"))},
        },
    };
    return page;
}
