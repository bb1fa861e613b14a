// Status Bar > Battery > Colors: a default colour, and colours while charging, in low power mode
// and at low battery, each shown while its switch is on.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMBatteryColorsPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMBatteryColorsPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/BatteryColors",
        .domain = NimbraDomains::identifier(".battery"),
        .fixesColorRows = true,
        .rules = NIMModulePageKinds::colorSwitches({"default", "charging", "lpm", "lowBattery"}),
    };
    return page;
}
