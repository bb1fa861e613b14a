// Control Center > Connectivity Module > Disable Toggles: which toggles stay off while the device is locked.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMControlCenterConnectivityModuleDisableTogglesPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMControlCenterConnectivityModuleDisableTogglesPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/ControlCenterConnectivityModuleDisableToggles",
        .domain = NimbraDomains::identifier(".controlcenter"),
        .fixesColorRows = true,
    };
    return page;
}
