// CPU Info > Background: the module's background and its custom colour.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMCPUInfoBackgroundPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMCPUInfoBackgroundPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/CPUInfoBackground",
        .domain = NimbraDomains::identifier(".cpuinfo"),
        .fixesColorRows = true,
        .rules = NIMModulePageKinds::singleColor("customBackgroundColorEnabled"),
    };
    return page;
}
