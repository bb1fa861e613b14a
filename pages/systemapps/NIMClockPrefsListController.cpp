// Clock: the Clock app's customisations behind their master switch; the time until the next alarm
// shows while its switch is on.

#include "frame/NIMStockAppListController.h"
#include "storage/NimbraDomains.h"

NIM_APP_PAGE(NIMClockPrefsListController, "Clock", "com.apple.mobiletimer");

const PageDescription& NIMClockPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SystemApps/Clock",
        .domain = NimbraDomains::identifier(".clock"),
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain({"topLevelChild1", "topLevelChild2"}, "topLevelSwitch")
                .nests({"enableTimeUntilAlarm"}),
            when("enableTimeUntilAlarm", Condition::on()).editedBy("topLevelChild2").chain({"topLevelChild2Child"}, "topLevelChild2"),
        },
    };
    return page;
}
