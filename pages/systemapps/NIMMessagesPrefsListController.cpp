// Messages: the Messages app's customisations behind their master switch.

#include "frame/NIMStockAppListController.h"
#include "storage/NimbraDomains.h"

NIM_APP_PAGE(NIMMessagesPrefsListController, "Messages", "com.apple.MobileSMS");

const PageDescription& NIMMessagesPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SystemApps/Messages",
        .domain = NimbraDomains::identifier(".messages"),
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 3), "topLevelSwitch"),
        },    };
    return page;
}
