// Tovin > Notification Title: the notification's title, its style and its colour.
// The colour row follows three tests of one selector, as on the app icon page.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMTovinNotificationTitlePrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMTovinNotificationTitlePrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/TovinNotificationTitle",
        .domain = NimbraDomains::identifier(".tovin"),
        .fixesColorRows = true,
        .rules = NIMModulePageKinds::bannerElement("showTitle", "titleColorType"),
    };
    return page;
}
