// Notifications: the group's master switch over its options, pull to dismiss, the time shown on a
// notification and its corner radius, two test buttons and the settings reset.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "frame/PageActions.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMNotificationsRootPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMNotificationsRootPrefsListController::description()
{
    const auto cornerRadius = numbered("cornerRadiusChild%d", 1, 8);
    const auto pullDown = numbered("pullDownChild%d", 1, 4);
    static const PageDescription page{
        .definition = "pages/SpringBoard/NotificationsRoot",
        .domain = NimbraDomains::identifier(".notifications"),
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 16), "topLevelSwitch")
                .nests({"pullToDismissNotifications", "enableCustomTimeInformation", "enableCustomCornerRadius"})
                .hiding(numbered("topLevelChild%d", 1, 16) + cornerRadius + pullDown + std::vector<std::string>{"timeChild1", "timeChild2"}),
            when("pullToDismissNotifications", Condition::on()).editedBy("topLevelChild5").chain(pullDown, "topLevelChild5"),
            when("enableCustomTimeInformation", Condition::on()).editedBy("topLevelChild14").chain({"timeChild1", "timeChild2"}, "topLevelChild14"),
            when("enableCustomCornerRadius", Condition::on()).editedBy("topLevelChild16").chain(cornerRadius, "topLevelChild16"),
        },
        .actions = {
            {"testNotifications", PageActions::postNotification(NimbraDomains::kNotificationsTestNotifications)},
            {"testBanner", PageActions::postNotification(NimbraDomains::kNotificationsTestBanner)},
            {"resetSettings", confirmedReset(groupSettingsReset("Notifications", ".notifications", {}, false))},
        },
    };
    return page;
}
