// Bluetooth Battery Info: the module's master switch over its options, and the group's resets.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMBluetoothBatteryInfoRootPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMBluetoothBatteryInfoRootPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/BluetoothBatteryInfoRoot",
        .domain = NimbraDomains::identifier(".bluetoothbatteryinfo"),
        .rules = NIMModulePageKinds::root(14),
        .actions = {
            {"resetSettings", confirmedReset(groupSettingsReset("Bluetooth Battery Info", ".bluetoothbatteryinfo", {".blackListedApps"}))},
            {"resetColors", confirmedReset(groupColorsReset("Bluetooth Battery Info", ".bluetoothbatteryinfo"))},
        },
    };
    return page;
}
