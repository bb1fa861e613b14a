// Lock Screen > General: the swipe-up text, the carrier text, the charging animation, the keypad
// style and the "Enter Passcode" text.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "frame/PageActions.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMLockScreenGeneralPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMLockScreenGeneralPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/LockScreenGeneral",
        .domain = NimbraDomains::identifier(".lockscreen"),
        .rules = {
            when("noSwipeToUnlockText", Condition::off()).editedBy("swipeUpParent").chain({"swipeUpChild1", "swipeUpChild2"}, "swipeUpParent")
                .nests({"enableCustomSwipeUpText"}),
            when("enableCustomSwipeUpText", Condition::on()).editedBy("swipeUpChild2")
                .chain({"swipeUpChild2Child1", "swipeUpChild2Child2"}, "swipeUpChild2"),
            when("enableCustomCarrier", Condition::on()).editedBy("carrierParent").chain({"carrierChild1", "carrierChild2"}, "carrierParent"),
            when("hideBatteryChargingAnimation", Condition::off()).editedBy("batteryParent").chain({"batteryChild"}, "batteryParent"),
            when("hideEnterPasscodeText", Condition::off()).editedBy("passcodeTextParent").chain({"passcodeTextChild"}, "passcodeTextParent")
                .nests({"enableCustomEnterPasscodeText"}),
            when("enableCustomEnterPasscodeText", Condition::on()).editedBy("passcodeTextChild")
                .chain({"passcodeTextGrandChild1", "passcodeTextGrandChild2"}, "passcodeTextChild"),
            when("enableCustomKeypadStyle", Condition::on()).editedBy("keypadParent").chain({"keypadChild"}, "keypadParent"),
        },
        .captured = {"swipeUpChild1", "swipeUpChild2", "swipeUpChild2Child1", "swipeUpChild2Child2", "carrierChild1", "carrierChild2",
                     "batteryChild", "keypadChild", "passcodeTextParent", "passcodeTextChild", "passcodeTextGrandChild1",
                     "passcodeTextGrandChild2"},
        .actions = {
            {"saveTextCell", PageActions::saveTextCell()},
        },
    };
    return page;
}
