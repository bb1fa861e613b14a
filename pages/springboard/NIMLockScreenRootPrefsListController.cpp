// Lock Screen: the group's master switch over its options and pages (the media module's page
// shows while the module is not hidden), and the group's resets.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMLockScreenRootPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMLockScreenRootPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/LockScreenRoot",
        .domain = NimbraDomains::identifier(".lockscreen"),
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 10), "topLevelSwitch")
                .nests({"hideLockScreenMediaModule"}),
            when("hideLockScreenMediaModule", Condition::off()).editedBy("topLevelChild6").chain({"mediaModuleChild"}, "topLevelChild6"),
        },
        .actions = {
            {"resetSettings", confirmedReset(groupSettingsReset("Lock Screen", ".lockscreen", {}, false))},
            {"resetColors", confirmedReset(groupColorsReset("Lock Screen", ".lockscreen"))},
        },
    };
    return page;
}
