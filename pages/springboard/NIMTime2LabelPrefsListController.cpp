// Status Bar > Time > Time 2 Label: the second time label, its second string, its colour, and the app a double tap or a
// long press on it opens.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "frame/NIMPageKinds.h"
#include "frame/PageActions.h"
#include "storage/NIMAppPicker.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMTime2LabelPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMTime2LabelPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/Time2Label",
        .domain = NimbraDomains::identifier(".time"),
        .fixesColorRows = true,
        .rules = NIMPageKinds::timeLabel("time2Label", 5, true),
        .actions = {
            {"saveTextCell", PageActions::saveTextCell()},
            {"selectDoubleTapApp", NIMAppPicker::action(NimbraDomains::gestureApps(".time"), "time2LabelDoubleTapApp", NIMAppPicker::Limit::SingleApp)},
            {"selectHoldApp", NIMAppPicker::action(NimbraDomains::gestureApps(".time"), "time2LabelHoldApp", NIMAppPicker::Limit::SingleApp)},
        },
    };
    return page;
}
