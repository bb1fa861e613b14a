// Phone > Tabs: the tab Phone opens on, while that option is on.

#include "frame/NIMStockAppListController.h"
#include "storage/NimbraDomains.h"

NIM_APP_PAGE(NIMPhoneTabsPrefsListController, "Phone", "com.apple.mobilephone");

const PageDescription& NIMPhoneTabsPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SystemApps/PhoneTabs",
        .domain = NimbraDomains::identifier(".phone"),
        .rules = {
            when("enableDefaultOpenedTab", Condition::on()).editedBy("defaultTabParent").chain({"defaultTabChild"}, "defaultTabParent"),
        },
    };
    return page;
}
