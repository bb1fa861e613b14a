// Lock Screen > Time and Date: the clock and date on the lock screen. Every row is always shown.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMLockScreenTimeAndDatePrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMLockScreenTimeAndDatePrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/LockScreenTimeAndDate",
        .domain = NimbraDomains::identifier(".lockscreen"),
    };
    return page;
}
