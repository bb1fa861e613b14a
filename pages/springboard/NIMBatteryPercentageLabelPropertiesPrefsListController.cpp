// Status Bar > Battery > Percentage Label: the label's font and colour. Every row is always shown.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMBatteryPercentageLabelPropertiesPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMBatteryPercentageLabelPropertiesPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/BatteryPercentageLabelProperties",
        .domain = NimbraDomains::identifier(".battery"),
        .fixesColorRows = true,
    };
    return page;
}
