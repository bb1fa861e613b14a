// Safari: Safari's customisations behind their master switch; its colours show while colourising is on.

#include "frame/NIMStockAppListController.h"
#include "storage/NimbraDomains.h"

NIM_APP_PAGE(NIMSafariPrefsListController, "Safari", "com.apple.mobilesafari");

const PageDescription& NIMSafariPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SystemApps/Safari",
        .domain = NimbraDomains::identifier(".safari"),
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 13), "topLevelSwitch")
                .nests({"colorize"}),
            when("colorize", Condition::on()).editedBy("topLevelChild13").chain({"colorizeChild"}, "topLevelChild13"),
        },
    };
    return page;
}
