// CPU Info > Location: where the module sits, in portrait and in landscape.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMCPUInfoLocationPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMCPUInfoLocationPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/CPUInfoLocation",
        .domain = NimbraDomains::identifier(".cpuinfo"),
        .rules = NIMModulePageKinds::location(),
    };
    return page;
}
