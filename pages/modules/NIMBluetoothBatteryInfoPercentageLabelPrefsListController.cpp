// Bluetooth Battery Info > Percentage Label: a default colour, and colours while charging, in low power
// mode and at low battery, each shown only while its switch is on.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMBluetoothBatteryInfoPercentageLabelPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMBluetoothBatteryInfoPercentageLabelPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/BluetoothBatteryInfoPercentageLabel",
        .domain = NimbraDomains::identifier(".bluetoothbatteryinfo"),
        .fixesColorRows = true,
        .rules = NIMModulePageKinds::colorSwitches({"default", "charging", "lpm", "lowBattery"}),
    };
    return page;
}
