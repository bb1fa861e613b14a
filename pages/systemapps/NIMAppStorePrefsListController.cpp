// App Store: the App Store's customisations behind their master switch.

#include "frame/NIMStockAppListController.h"
#include "storage/NimbraDomains.h"

NIM_APP_PAGE(NIMAppStorePrefsListController, "App Store", "com.apple.AppStore");

const PageDescription& NIMAppStorePrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SystemApps/AppStore",
        .domain = NimbraDomains::identifier(".appstore"),
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 4), "topLevelSwitch"),
        },    };
    return page;
}
