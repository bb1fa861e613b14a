// Status Bar > Battery: the battery indicator's master switch over its options; the percentage
// label's rows show for style 2.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMBatteryRootPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMBatteryRootPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/BatteryRoot",
        .domain = NimbraDomains::identifier(".battery"),
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 6), "topLevelSwitch")
                .nests({"style"}),
            when("style", Condition::equal(2)).editedBy("topLevelChild2").chain({"percentageChild1", "percentageChild2"}, "topLevelChild2"),
        },
    };
    return page;
}
