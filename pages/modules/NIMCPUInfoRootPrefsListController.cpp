// CPU Info: the module's master switch over its options, and the group's resets.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMCPUInfoRootPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMCPUInfoRootPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/CPUInfoRoot",
        .domain = NimbraDomains::identifier(".cpuinfo"),
        .rules = NIMModulePageKinds::root(14),
        .actions = {
            {"resetSettings", confirmedReset(groupSettingsReset("CPU Info", ".cpuinfo", {".blackListedApps", ".holdApp", ".doubleTapApp"}))},
            {"resetColors", confirmedReset(groupColorsReset("CPU Info", ".cpuinfo"))},
        },
    };
    return page;
}
