// Gestures: swipe-up actions, double taps on the home and lock screens, and reachability's actions.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "frame/NIMPageKinds.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMGesturesPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMGesturesPrefsListController::description()
{
    // Listed in the order the reload applies them.
    static const PageDescription page{
        .definition = "pages/SpringBoard/Gestures",
        .domain = NimbraDomains::identifier(".misc"),
        .rules = NIMPageKinds::switches({
            {"enableReachabilityActions", "reachabilityParent", numbered("reachabilityChild%d", 1, 3)},
            {"enableHomeScreenDoubleCustomAction", "homeScreenDoubleTapActionParent", {"homeScreenDoubleTapActionChild"}},
            {"enableLockScreenDoubleCustomAction", "lockScreenDoubleTapActionParent", {"lockScreenDoubleTapActionChild"}},
            {"enableSwipeUpActions", "swipeUpParent", {"swipeUpChild"}},
        }),
        .captured = numbered("reachabilityChild%d", 1, 3) + std::vector<std::string>{"homeScreenDoubleTapActionChild",
                                                                                      "lockScreenDoubleTapActionChild",
                                                                                      "reachabilityParent", "swipeUpParent",
                                                                                      "swipeUpChild"},
    };
    return page;
}
