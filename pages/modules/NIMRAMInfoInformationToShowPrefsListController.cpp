// RAM Info > Information to Show: which readings the module shows, and how.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "frame/PageActions.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMRAMInfoInformationToShowPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMRAMInfoInformationToShowPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/RAMInfoInformationToShow",
        .domain = NimbraDomains::identifier(".raminfo"),
        .rules = NIMModulePageKinds::informationToShow({
            {"showUsedRam", "usedParent", {"usedChild"}},
            {"showFreeRam", "freeParent", {"freeChild"}},
            {"showTotalPhysicalRam", "totalParent", {"totalChild"}},
        }),
        .actions = {
            {"saveTextCell", PageActions::saveTextCell()},
        },
    };
    return page;
}
