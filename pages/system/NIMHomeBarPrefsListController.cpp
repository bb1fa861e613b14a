// System > Home Bar: the home bar's colour and its size, each shown while its switch is on.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "frame/NIMPageKinds.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMHomeBarPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMHomeBarPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/System/HomeBar",
        .domain = NimbraDomains::identifier(".system"),
        .fixesColorRows = true,
        .rules = NIMPageKinds::switches({
            {"enableCustomHomeBarColor", "customColorParent", {"customColorChild"}},
            {"enableHomeBarCustomSize", "customSizeParent", numbered("customSizeChild%d", 1, 10)},
        }),
    };
    return page;
}
