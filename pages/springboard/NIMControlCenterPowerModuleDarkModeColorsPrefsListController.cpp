// Control Center > Power Module > Dark Mode Colors: each button's colour in dark mode.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMControlCenterPowerModuleDarkModeColorsPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMControlCenterPowerModuleDarkModeColorsPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/ControlCenterPowerModuleDarkModeColors",
        .domain = NimbraDomains::identifier(".controlcenter"),
        .fixesColorRows = true,
    };
    return page;
}
