// Network Speed > Label: the module's text and its custom colour.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMNetworkSpeedLabelPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMNetworkSpeedLabelPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/NetworkSpeedLabel",
        .domain = NimbraDomains::identifier(".networkspeed"),
        .fixesColorRows = true,
        .rules = NIMModulePageKinds::singleColor("customTextColorEnabled"),
    };
    return page;
}
