// Bluetooth Battery Info > DeviceNameLabel: the device names and a custom colour for them.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMBluetoothBatteryInfoDeviceNameLabelPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMBluetoothBatteryInfoDeviceNameLabelPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/BluetoothBatteryInfoDeviceNameLabel",
        .domain = NimbraDomains::identifier(".bluetoothbatteryinfo"),
        .fixesColorRows = true,
        .rules = NIMModulePageKinds::singleColor("enableCustomDeviceNameColor"),
    };
    return page;
}
