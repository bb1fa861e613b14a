// Tovin > Background: the banner's background style; type 2 is a custom colour.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMTovinBackgroundPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMTovinBackgroundPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/TovinBackground",
        .domain = NimbraDomains::identifier(".tovin"),
        .fixesColorRows = true,
        .rules = {
            when("backgroundColorType", Condition::equal(2)).editedBy("bgParent").chain({"bgChild"}, "bgParent").reloadDefaulting(PlistValue(0)),
        },
    };
    return page;
}
