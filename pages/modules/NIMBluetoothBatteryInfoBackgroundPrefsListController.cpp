// Bluetooth Battery Info > Background: the module's background and a custom colour for them.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMBluetoothBatteryInfoBackgroundPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMBluetoothBatteryInfoBackgroundPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/BluetoothBatteryInfoBackground",
        .domain = NimbraDomains::identifier(".bluetoothbatteryinfo"),
        .fixesColorRows = true,
        .rules = NIMModulePageKinds::singleColor("customBackgroundColorEnabled"),
    };
    return page;
}
