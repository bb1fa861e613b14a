// Control Center > Connectivity Module > Light Mode Colors: each toggle's colours in light mode.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMControlCenterConnectivityModuleLightModeColorsPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMControlCenterConnectivityModuleLightModeColorsPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/ControlCenterConnectivityModuleLightModeColors",
        .domain = NimbraDomains::identifier(".controlcenter"),
        .fixesColorRows = true,
    };
    return page;
}
