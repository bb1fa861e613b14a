// Lock Screen > Quick Action Buttons: the flashlight and camera buttons. Every row is always shown.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMLockScreenQuickActionButtonsPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMLockScreenQuickActionButtonsPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/LockScreenQuickActionButtons",
        .domain = NimbraDomains::identifier(".lockscreen"),
    };
    return page;
}
