// RAM Info > Background: the module's background and its custom colour.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMRAMInfoBackgroundPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMRAMInfoBackgroundPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/RAMInfoBackground",
        .domain = NimbraDomains::identifier(".raminfo"),
        .fixesColorRows = true,
        .rules = NIMModulePageKinds::singleColor("customBackgroundColorEnabled"),
    };
    return page;
}
