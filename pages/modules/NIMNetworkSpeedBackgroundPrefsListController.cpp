// Network Speed > Background: the module's background and its custom colour.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMNetworkSpeedBackgroundPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMNetworkSpeedBackgroundPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/NetworkSpeedBackground",
        .domain = NimbraDomains::identifier(".networkspeed"),
        .fixesColorRows = true,
        .rules = NIMModulePageKinds::singleColor("customBackgroundColorEnabled"),
    };
    return page;
}
