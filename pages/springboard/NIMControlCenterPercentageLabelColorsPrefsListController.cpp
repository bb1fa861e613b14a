// Control Center > Sliders > Percentage Label Colors: the colours of the sliders' percentages.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMControlCenterPercentageLabelColorsPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMControlCenterPercentageLabelColorsPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/ControlCenterPercentageLabelColors",
        .domain = NimbraDomains::identifier(".controlcenter"),
        .fixesColorRows = true,
    };
    return page;
}
