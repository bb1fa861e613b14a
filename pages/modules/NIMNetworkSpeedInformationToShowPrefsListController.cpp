// Network Speed > Information to Show: which readings the module shows, and how.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "frame/PageActions.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMNetworkSpeedInformationToShowPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMNetworkSpeedInformationToShowPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/NetworkSpeedInformationToShow",
        .domain = NimbraDomains::identifier(".networkspeed"),
        .rules = NIMModulePageKinds::informationToShow({
            {"showUploadSpeed", "uploadParent", {"uploadChild"}},
            {"showDownloadSpeed", "downloadParent", {"downloadChild"}},
        }),
        .actions = {
            {"saveTextCell", PageActions::saveTextCell()},
        },
    };
    return page;
}
