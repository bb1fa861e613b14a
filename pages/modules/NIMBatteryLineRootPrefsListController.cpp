// Battery Line: the module's master switch over its options, and the group's resets. The second
// option is the line's style; its two sub-options do not apply to style 3.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMBatteryLineRootPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMBatteryLineRootPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/BatteryLineRoot",
        .domain = NimbraDomains::identifier(".batteryline"),
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 10), "topLevelSwitch").nests({"style"}),
            when("style", Condition::notEqual(3)).editedBy("topLevelChild2").chain({"topLevelChild2Child1", "topLevelChild2Child2"}, "topLevelChild2"),
        },
        .actions = {
            {"resetSettings", confirmedReset(groupSettingsReset("Battery Line", ".batteryline", {".blackListedApps"}))},
            {"resetColors", confirmedReset(groupColorsReset("Battery Line", ".batteryline"))},
        },
    };
    return page;
}
