// RAM Info > Label: the module's text and its custom colour.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMRAMInfoLabelPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMRAMInfoLabelPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/RAMInfoLabel",
        .domain = NimbraDomains::identifier(".raminfo"),
        .fixesColorRows = true,
        .rules = NIMModulePageKinds::singleColor("customTextColorEnabled"),
    };
    return page;
}
