// Status Bar > Time > Pill Label: the time in the pill, its second string and its colour.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "frame/NIMPageKinds.h"
#include "frame/PageActions.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMTimePillLabelPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMTimePillLabelPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/TimePillLabel",
        .domain = NimbraDomains::identifier(".time"),
        .fixesColorRows = true,
        .rules = NIMPageKinds::timeLabel("timePillLabel", 6, false),
        .actions = {
            {"saveTextCell", PageActions::saveTextCell()},
        },
    };
    return page;
}
