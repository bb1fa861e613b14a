// System > Animated Cells: how table cells animate, and the apps where they do not.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMAppPicker.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMSystemAnimatedTableCellsPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMSystemAnimatedTableCellsPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/System/SystemAnimatedTableCells",
        .domain = NimbraDomains::identifier(".system"),
        .actions = {
            {"selectAppsToDisableAnimatedTableCells",
             NIMAppPicker::action(NimbraDomains::systemApps(), "animatedTableCellsDisabledApps", NIMAppPicker::Limit::AnyNumber)},
        },
    };
    return page;
}
