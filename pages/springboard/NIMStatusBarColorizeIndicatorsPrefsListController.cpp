// Status Bar > Colorize Indicators: ten indicators, each with its colours shown while its switch is on.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "frame/NIMPageKinds.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMStatusBarColorizeIndicatorsPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMStatusBarColorizeIndicatorsPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/StatusBarColorizeIndicators",
        .domain = NimbraDomains::identifier(".statusbar"),
        .fixesColorRows = true,
        .rules = NIMPageKinds::switches({
            {"colorizeCellularSignal", "cellularSignalParent", {"cellularSignalChild1", "cellularSignalChild2"}},
            {"colorizeWiFiSignal", "wifiSignalParent", {"wifiSignalChild1", "wifiSignalChild2"}},
            {"colorizeTextIndicators", "textIndicatorsParent", {"textIndicatorsChild"}},
            {"colorizeAirplane", "airplaneParent", {"airplaneChild"}},
            {"colorizeAlarm", "alarmParent", {"alarmChild"}},
            {"colorizeDND", "dndParent", {"dndChild"}},
            {"colorizeRotationLock", "rotationLockParent", {"rotationLockChild"}},
            {"colorizeOtherIcons", "otherIconsParent", {"otherIconsChild"}},
            {"colorizePillBackground", "pillBGParent", {"pillBGChild"}},
            {"colorizePillIcon", "pillIconParent", {"pillIconChild"}},
        }),
    };
    return page;
}
