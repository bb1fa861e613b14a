// Bluetooth Battery Info > Information to Show: which details each device shows. Every row is always shown.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMBluetoothBatteryInfoInformationToShowPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMBluetoothBatteryInfoInformationToShowPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/BluetoothBatteryInfoInformationToShow",
        .domain = NimbraDomains::identifier(".bluetoothbatteryinfo"),
    };
    return page;
}
