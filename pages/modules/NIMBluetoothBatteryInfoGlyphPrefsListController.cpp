// Bluetooth Battery Info > Glyph: the device glyphs and a custom colour for them.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMBluetoothBatteryInfoGlyphPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMBluetoothBatteryInfoGlyphPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/BluetoothBatteryInfoGlyph",
        .domain = NimbraDomains::identifier(".bluetoothbatteryinfo"),
        .fixesColorRows = true,
        .rules = NIMModulePageKinds::singleColor("enableGlyphCustomTintColor"),
    };
    return page;
}
