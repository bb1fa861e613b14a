// Control Center > Connectivity Module > Dark Mode Colors: each toggle's colours in dark mode.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMControlCenterConnectivityModuleDarkModeColorsPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMControlCenterConnectivityModuleDarkModeColorsPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/ControlCenterConnectivityModuleDarkModeColors",
        .domain = NimbraDomains::identifier(".controlcenter"),
        .fixesColorRows = true,
    };
    return page;
}
