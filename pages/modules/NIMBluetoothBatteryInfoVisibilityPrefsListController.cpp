// Bluetooth Battery Info > Visibility: where the module shows, and the apps it stays away from.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMAppPicker.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMBluetoothBatteryInfoVisibilityPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMBluetoothBatteryInfoVisibilityPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/BluetoothBatteryInfoVisibility",
        .domain = NimbraDomains::identifier(".bluetoothbatteryinfo"),
        .rules = NIMModulePageKinds::visibility(7),
        .actions = {
            {"selectBlackListedApps", NIMAppPicker::action(NimbraDomains::blackListedApps(".bluetoothbatteryinfo"), "blackListedApps", NIMAppPicker::Limit::AnyNumber)},
        },
    };
    return page;
}
