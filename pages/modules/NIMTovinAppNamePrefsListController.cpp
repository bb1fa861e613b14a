// Tovin > App Name: the app's name, its style and its colour.
// The colour row follows three tests of one selector, as on the app icon page.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMTovinAppNamePrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMTovinAppNamePrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/TovinAppName",
        .domain = NimbraDomains::identifier(".tovin"),
        .fixesColorRows = true,
        .rules = NIMModulePageKinds::bannerElement("showAppName", "appNameColorType"),
    };
    return page;
}
