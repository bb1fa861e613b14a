// Phone: the Phone app's customisations behind their master switch, links to its screens, and the
// settings reset, which closes Phone instead of respringing.

#include "frame/NIMStockAppListController.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

NIM_APP_PAGE(NIMPhoneRootPrefsListController, "Phone", "com.apple.mobilephone");

const PageDescription& NIMPhoneRootPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SystemApps/PhoneRoot",
        .domain = NimbraDomains::identifier(".phone"),
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 6), "topLevelSwitch"),
        },        .actions = {
            {"resetSettings", confirmedReset(closingApp(groupSettingsReset("Phone", ".phone", {})))},
        },
    };
    return page;
}
