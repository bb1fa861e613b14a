// Settings > Wi-Fi: how the Settings app's Wi-Fi page looks. Every row is always shown.

#include "frame/NIMStockAppListController.h"
#include "storage/NimbraDomains.h"

NIM_APP_PAGE(NIMSettingsWiFiViewPrefsListController, "Settings", "com.apple.Preferences");

const PageDescription& NIMSettingsWiFiViewPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SystemApps/SettingsWiFiView",
        .domain = NimbraDomains::identifier(".settings"),
    };
    return page;
}
