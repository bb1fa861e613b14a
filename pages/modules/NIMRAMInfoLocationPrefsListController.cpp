// RAM Info > Location: where the module sits, in portrait and in landscape.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMRAMInfoLocationPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMRAMInfoLocationPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/RAMInfoLocation",
        .domain = NimbraDomains::identifier(".raminfo"),
        .rules = NIMModulePageKinds::location(),
    };
    return page;
}
