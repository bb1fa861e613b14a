// Widgets: the group's master switch over its options, the older widget style's page while it is
// on, and the group's resets (the settings file also holds the App Library switch).

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMWidgetsRootPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMWidgetsRootPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/WidgetsRoot",
        .domain = NimbraDomains::identifier(".widgets"),
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 11), "topLevelSwitch")
                .nests({"oldWidgetsEnabled"}),
            when("oldWidgetsEnabled", Condition::on()).editedBy("topLevelChild11").chain({"oldWidgetsChild"}, "topLevelChild11"),
        },
        .actions = {
            {"resetSettings", confirmedReset(groupSettingsReset("Widgets", ".widgets", {}, false))},
            {"resetColors", confirmedReset(groupColorsReset("Widgets", ".widgets"))},
        },
    };
    return page;
}
