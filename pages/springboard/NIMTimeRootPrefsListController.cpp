// Status Bar > Time: the master switch over the time labels, each label's page shown while its
// custom style is on.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMTimeRootPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMTimeRootPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/TimeRoot",
        .domain = NimbraDomains::identifier(".time"),
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 8), "topLevelSwitch")
                .nests({"enableCustomTime1LabelStyle", "enableCustomTime2LabelStyle", "enableCustomPillTimeLabelStyle",
                        "enableCustomDateLabelStyle"}),
            when("enableCustomTime1LabelStyle", Condition::on()).editedBy("topLevelChild2").chain({"time1LabelChild"}, "topLevelChild2"),
            when("enableCustomTime2LabelStyle", Condition::on()).editedBy("topLevelChild4").chain({"time2LabelChild"}, "topLevelChild4"),
            when("enableCustomPillTimeLabelStyle", Condition::on()).editedBy("topLevelChild6").chain({"pillLabelChild"}, "topLevelChild6"),
            when("enableCustomDateLabelStyle", Condition::on()).editedBy("topLevelChild8").chain({"dateLabelChild"}, "topLevelChild8"),
        },
    };
    return page;
}
