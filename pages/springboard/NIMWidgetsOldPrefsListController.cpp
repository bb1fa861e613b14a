// Widgets > Older Widgets: background and border colours of the older widget style.
//
// The border's presence test looks up "borderChild", an id the page never has, so switching the
// border on while its rows are shown inserts them again; kept as it is.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMWidgetsOldPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMWidgetsOldPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/WidgetsOld",
        .domain = NimbraDomains::identifier(".widgets"),
        .fixesColorRows = true,
        .rules = {
            when("colorizeBackground", Condition::on()).editedBy("bgParent").chain({"bgChild1", "bgChild2", "bgChild3"}, "bgParent")
                .nests({"customBackgroundColorEnabled"}).hiding({"bgChild1", "bgChild1Child", "bgChild2", "bgChild3"}),
            when("customBackgroundColorEnabled", Condition::on()).editedBy("bgChild1").chain({"bgChild1Child"}, "bgChild1"),
            when("colorizeBorder", Condition::on()).editedBy("borderParent").chain(numbered("borderChild%d", 1, 5), "borderParent")
                .guardedOnUncaptured("borderChild").nests({"customBorderColorEnabled"})
                .hiding(std::vector<std::string>{"borderChild1", "borderChild1Child"} + numbered("borderChild%d", 2, 5)),
            when("customBorderColorEnabled", Condition::on()).editedBy("borderChild1").chain({"borderChild1Child"}, "borderChild1"),
        },
    };
    return page;
}
