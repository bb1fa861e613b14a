// Miscellaneous > Swipe Up Gestures: an action for a swipe up from each third of the screen's bottom
// edge, on the lock screen, the home screen and inside apps.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "frame/NIMPageKinds.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMSwipeUpGesturesPrefsListController, NIMGeneralListControllerWithRespringButton);

namespace {

// "enable" + place + "SwipeUp" + zone + "Action" shows place (lower camel) + zone + "Child".
std::vector<NIMPageKinds::Switch> swipeUpActions()
{
    std::vector<NIMPageKinds::Switch> items;
    for (auto [place, row] : {std::pair{"LockScreen", "lockScreen"}, {"HomeScreen", "homeScreen"}, {"InsideApps", "insideApps"}})
        for (const char* zone : {"LeftSide", "Center", "RightSide"})
            items.push_back({std::string("enable") + place + "SwipeUp" + zone + "Action", std::string(row) + zone + "Parent",
                             {std::string(row) + zone + "Child"}});
    return items;
}

}  // namespace

const PageDescription& NIMSwipeUpGesturesPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/SwipeUpGestures",
        .domain = NimbraDomains::identifier(".misc"),
        .rules = NIMPageKinds::switches(swipeUpActions()),
    };
    return page;
}
