// Status Bar > Time > Time 1 Label: the first time label, its second string, its colour, and the app a double tap or a
// long press on it opens.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "frame/NIMPageKinds.h"
#include "frame/PageActions.h"
#include "storage/NIMAppPicker.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMTime1LabelPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMTime1LabelPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/Time1Label",
        .domain = NimbraDomains::identifier(".time"),
        .fixesColorRows = true,
        .rules = NIMPageKinds::timeLabel("time1Label", 6, true),
        .actions = {
            {"saveTextCell", PageActions::saveTextCell()},
            {"selectDoubleTapApp", NIMAppPicker::action(NimbraDomains::gestureApps(".time"), "time1LabelDoubleTapApp", NIMAppPicker::Limit::SingleApp)},
            {"selectHoldApp", NIMAppPicker::action(NimbraDomains::gestureApps(".time"), "time1LabelHoldApp", NIMAppPicker::Limit::SingleApp)},
        },
    };
    return page;
}
