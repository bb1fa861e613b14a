#include "pages/modules/NIMBatteryLineColorsPrefsListController.h"

#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_REGISTER_PAGE(NIMBatteryLineColorsPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMBatteryLineColorsPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/BatteryLineColors",
        .domain = NimbraDomains::identifier(".batteryline"),
        .fixesColorRows = true,
        .rules = {
            when("chargingColorEnabled", Condition::on()).chain({"chargingChild"}, "chargingParent"),
            when("lpmColorEnabled", Condition::on()).chain({"lpmChild"}, "lpmParent"),
            when("lowBatteryColorEnabled", Condition::on()).chain({"lowBatteryChild"}, "lowBatteryParent"),
        },
    };
    return page;
}
