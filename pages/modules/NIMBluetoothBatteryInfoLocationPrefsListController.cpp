// Bluetooth Battery Info > Location: where the module sits, in portrait and in landscape.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMBluetoothBatteryInfoLocationPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMBluetoothBatteryInfoLocationPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/BluetoothBatteryInfoLocation",
        .domain = NimbraDomains::identifier(".bluetoothbatteryinfo"),
        .rules = NIMModulePageKinds::location(),
    };
    return page;
}
