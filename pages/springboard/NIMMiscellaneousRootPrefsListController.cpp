// Miscellaneous: the group's master switch over its options (screen corner radius, lock animation,
// shortcut notifications among them), links to the ringer switch and swipe-up pages, and the
// settings reset.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMMiscellaneousRootPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMMiscellaneousRootPrefsListController::description()
{
    const auto lockAnimation = numbered("lockAnimationChild%d", 1, 3);
    static const PageDescription page{
        .definition = "pages/SpringBoard/Miscellaneous",
        .domain = NimbraDomains::identifier(".misc"),
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 21), "topLevelSwitch")
                .nests({"customScreenCornerRadiusEnabled", "enableLockAnimation", "disableNotificationsFromShortcuts"})
                .hiding(numbered("topLevelChild%d", 1, 21) + lockAnimation +
                        std::vector<std::string>{"customScreenRadiusChild", "shortcutsChild"}),
            when("enableLockAnimation", Condition::on()).editedBy("topLevelChild10").chain(lockAnimation, "topLevelChild10"),
            when("customScreenCornerRadiusEnabled", Condition::on()).editedBy("topLevelChild8")
                .chain({"customScreenRadiusChild"}, "topLevelChild8"),
            when("disableNotificationsFromShortcuts", Condition::on()).editedBy("topLevelChild12")
                .chain({"shortcutsChild"}, "topLevelChild12"),
        },
        .actions = {
            {"resetSettings", confirmedReset(groupSettingsReset("Miscellaneous", ".misc", {}, false))},
        },
    };
    return page;
}
