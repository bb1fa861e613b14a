// Battery Line > Colors: a colour for charging, low power mode and low battery, each shown only
// while its switch is on.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMBatteryLineColorsPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMBatteryLineColorsPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/BatteryLineColors",
        .domain = NimbraDomains::identifier(".batteryline"),
        .fixesColorRows = true,
        .rules = NIMModulePageKinds::colorSwitches({"charging", "lpm", "lowBattery"}),
    };
    return page;
}
