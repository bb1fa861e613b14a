// RAM Info: the module's master switch over its options, and the group's resets.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMRAMInfoRootPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMRAMInfoRootPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/RAMInfoRoot",
        .domain = NimbraDomains::identifier(".raminfo"),
        .rules = NIMModulePageKinds::root(14),
        .actions = {
            {"resetSettings", confirmedReset(groupSettingsReset("RAM Info", ".raminfo", {".blackListedApps", ".holdApp", ".doubleTapApp"}))},
            {"resetColors", confirmedReset(groupColorsReset("RAM Info", ".raminfo"))},
        },
    };
    return page;
}
