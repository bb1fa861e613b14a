// Tovin > NotificationTitle: the notification's title, its style and its colour.
//
// As on the app icon page, the colour row follows three tests of one selector: the show switch
// shows it for type 2, the selector for every type but 1, the reload hides it only for type 1.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMTovinNotificationTitlePrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMTovinNotificationTitlePrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/TovinNotificationTitle",
        .domain = NimbraDomains::identifier(".tovin"),
        .fixesColorRows = true,
        .rules = {
            when("showTitle", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 4), "topLevelSwitch")
                .nests({"customColor"}).reloadDefaulting(PlistValue(true)),
            when("titleColorType", Condition::notEqual(1)).editedBy("topLevelChild4").chain({"colorChild"}, "topLevelChild4")
                .reloadDefaulting(PlistValue(1)),
            when("titleColorType", Condition::equal(2)).named("customColor").editedBy("topLevelChild4")
                .chain({"colorChild"}, "topLevelChild4").notReloaded(),
        },
    };
    return page;
}
