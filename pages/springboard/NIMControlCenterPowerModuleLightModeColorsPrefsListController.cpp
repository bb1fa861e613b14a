// Control Center > Power Module > Light Mode Colors: each button's colour in light mode.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMControlCenterPowerModuleLightModeColorsPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMControlCenterPowerModuleLightModeColorsPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/ControlCenterPowerModuleLightModeColors",
        .domain = NimbraDomains::identifier(".controlcenter"),
        .fixesColorRows = true,
    };
    return page;
}
