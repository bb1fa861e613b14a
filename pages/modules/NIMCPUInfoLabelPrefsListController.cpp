// CPU Info > Label: the module's text and its custom colour.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMCPUInfoLabelPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMCPUInfoLabelPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/CPUInfoLabel",
        .domain = NimbraDomains::identifier(".cpuinfo"),
        .fixesColorRows = true,
        .rules = NIMModulePageKinds::singleColor("customTextColorEnabled"),
    };
    return page;
}
