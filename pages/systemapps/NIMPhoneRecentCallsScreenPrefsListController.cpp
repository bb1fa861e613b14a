// Phone > Recent Calls: colours for each kind of call, while colourising is on.

#include "frame/NIMStockAppListController.h"
#include "storage/NimbraDomains.h"

NIM_APP_PAGE(NIMPhoneRecentCallsScreenPrefsListController, "Phone", "com.apple.mobilephone");

const PageDescription& NIMPhoneRecentCallsScreenPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SystemApps/PhoneRecentCallsScreen",
        .domain = NimbraDomains::identifier(".phone"),
        .rules = {
            when("recentsColorizeCalls", Condition::on()).editedBy("colorizeCallsParent")
                .chain(numbered("colorizeCallsChild%d", 1, 9), "colorizeCallsParent"),
        },
    };
    return page;
}
