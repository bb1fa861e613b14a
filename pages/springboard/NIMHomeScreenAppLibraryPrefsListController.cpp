// Home Screen > App Library: the App Library's options while it is not disabled. The switch is
// kept with the widget settings.
//
// The presence test before inserting looks up "appLibraryChild1", an id the page never has, so it
// never stops the insertion; kept as it is.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMHomeScreenAppLibraryPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMHomeScreenAppLibraryPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/HomeScreenAppLibrary",
        .domain = NimbraDomains::identifier(".widgets"),
        .rules = {
            when("disableAppLibrary", Condition::off()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 4), "topLevelSwitch")
                .guardedOnUncaptured("appLibraryChild1"),
        },
    };
    return page;
}
