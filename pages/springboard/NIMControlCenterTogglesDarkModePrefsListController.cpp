// Control Center > Toggles > Dark Mode: each enabled module's toggle colours in dark mode.

#include "frame/NIMToggleColorsListController.h"
#include "storage/NimbraDomains.h"

NIM_TOGGLE_COLORS_PAGE(NIMControlCenterTogglesDarkModePrefsListController, "DarkMode");

const PageDescription& NIMControlCenterTogglesDarkModePrefsListController::description()
{
    static const PageDescription page{.domain = NimbraDomains::identifier(".controlcenter"), .fixesColorRows = true};
    return page;
}
