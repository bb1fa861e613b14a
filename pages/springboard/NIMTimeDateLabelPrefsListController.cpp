// Status Bar > Time > Date Label: the date label, its second string, its colour, and the app a double tap or a
// long press on it opens.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "frame/NIMPageKinds.h"
#include "frame/PageActions.h"
#include "storage/NIMAppPicker.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMTimeDateLabelPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMTimeDateLabelPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/TimeDateLabel",
        .domain = NimbraDomains::identifier(".time"),
        .fixesColorRows = true,
        .rules = NIMPageKinds::timeLabel("timeDateLabel", 5, true),
        .actions = {
            {"saveTextCell", PageActions::saveTextCell()},
            {"selectDoubleTapApp", NIMAppPicker::action(NimbraDomains::gestureApps(".time"), "timeDateLabelDoubleTapApp", NIMAppPicker::Limit::SingleApp)},
            {"selectHoldApp", NIMAppPicker::action(NimbraDomains::gestureApps(".time"), "timeDateLabelHoldApp", NIMAppPicker::Limit::SingleApp)},
        },
    };
    return page;
}
