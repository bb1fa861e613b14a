// App Switcher > Layout: the switcher's grid in portrait and in landscape (grid style 1).

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMAppSwitcherLayoutPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMAppSwitcherLayoutPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/AppSwitcherLayout",
        .domain = NimbraDomains::identifier(".appswitcher"),
        .rules = {
            when("gridSwitcherPortrait", Condition::equal(1)).editedBy("gridPortraitTop")
                .chain(numbered("gridPortrait%d", 1, 4), "gridPortraitTop"),
            when("gridSwitcherLandscape", Condition::equal(1)).editedBy("gridLandscapeTop")
                .chain(numbered("gridLandscape%d", 1, 4), "gridLandscapeTop"),
        },
    };
    return page;
}
