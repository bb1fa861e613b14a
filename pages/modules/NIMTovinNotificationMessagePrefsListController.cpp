// Tovin > Notification Message: the notification's message, its style and its colour.
// The colour row follows three tests of one selector, as on the app icon page.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMTovinNotificationMessagePrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMTovinNotificationMessagePrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/TovinNotificationMessage",
        .domain = NimbraDomains::identifier(".tovin"),
        .fixesColorRows = true,
        .rules = NIMModulePageKinds::bannerElement("showMessage", "messageColorType"),
    };
    return page;
}
