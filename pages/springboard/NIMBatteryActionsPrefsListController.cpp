// Status Bar > Battery > Actions: what a double tap or a long press on the battery does; action 4
// opens an app, chosen here.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMAppPicker.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMBatteryActionsPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMBatteryActionsPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/BatteryActions",
        .domain = NimbraDomains::identifier(".battery"),
        .rules = {
            when("doubleTapAction", Condition::equal(4)).editedBy("doubleTapParent").chain({"doubleTapChild"}, "doubleTapParent"),
            when("holdAction", Condition::equal(4)).editedBy("holdParent").chain({"holdChild"}, "holdParent"),
        },
        .actions = {
            {"selectDoubleTapApp", NIMAppPicker::action(NimbraDomains::gestureApps(".battery"), "doubleTapApp", NIMAppPicker::Limit::SingleApp)},
            {"selectHoldApp", NIMAppPicker::action(NimbraDomains::gestureApps(".battery"), "holdApp", NIMAppPicker::Limit::SingleApp)},
        },
    };
    return page;
}
