// Network Speed > Location: where the module sits, in portrait and in landscape.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMNetworkSpeedLocationPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMNetworkSpeedLocationPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/NetworkSpeedLocation",
        .domain = NimbraDomains::identifier(".networkspeed"),
        .rules = NIMModulePageKinds::location(),
    };
    return page;
}
