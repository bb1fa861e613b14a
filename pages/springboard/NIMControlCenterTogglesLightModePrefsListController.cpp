// Control Center > Toggles > Light Mode: each enabled module's toggle colours in light mode.

#include "frame/NIMToggleColorsListController.h"
#include "storage/NimbraDomains.h"

NIM_TOGGLE_COLORS_PAGE(NIMControlCenterTogglesLightModePrefsListController, "LightMode");

const PageDescription& NIMControlCenterTogglesLightModePrefsListController::description()
{
    static const PageDescription page{.domain = NimbraDomains::identifier(".controlcenter"), .fixesColorRows = true};
    return page;
}
