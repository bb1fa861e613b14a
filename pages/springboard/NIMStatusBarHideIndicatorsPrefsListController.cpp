// Status Bar > Hide Indicators: one switch per indicator. Every row is always shown.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMStatusBarHideIndicatorsPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMStatusBarHideIndicatorsPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/StatusBarHideIndicators",
        .domain = NimbraDomains::identifier(".statusbar"),
    };
    return page;
}
