// Miscellaneous > Ringer Switch: a custom action for each position of the ringer switch.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "frame/NIMPageKinds.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMRingerSwitchPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMRingerSwitchPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/RingerSwitch",
        .domain = NimbraDomains::identifier(".misc"),
        .rules = NIMPageKinds::switches({
            {"ringerSwitchCustomActionEnabled", "customActionParent", {"customActionChild1", "customActionChild2"}},
        }),
    };
    return page;
}
