// Control Center > Date and Time Location: where the date and time sit in Control Center's status
// bar, for every location but the default.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMControlCenterDateTimeLocationPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMControlCenterDateTimeLocationPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/ControlCenterDateTimeLocation",
        .domain = NimbraDomains::identifier(".controlcenter"),
        .fixesColorRows = true,
        .rules = {
            when("dateTimeLabelLocationType", Condition::notEqual(0)).editedBy("topLevelSwitch")
                .chain(numbered("topLevelChild%d", 1, 8), "topLevelSwitch"),
        },
    };
    return page;
}
