// Settings > Extra Information: what the Settings app shows about the device. Every row is always shown.

#include "frame/NIMStockAppListController.h"
#include "storage/NimbraDomains.h"

NIM_APP_PAGE(NIMSettingsExtraInformationPrefsListController, "Settings", "com.apple.Preferences");

const PageDescription& NIMSettingsExtraInformationPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SystemApps/SettingsExtraInformation",
        .domain = NimbraDomains::identifier(".settings"),
    };
    return page;
}
