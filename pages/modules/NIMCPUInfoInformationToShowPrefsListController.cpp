// CPU Info > Information to Show: which readings the module shows, and how.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "frame/PageActions.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMCPUInfoInformationToShowPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMCPUInfoInformationToShowPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/CPUInfoInformationToShow",
        .domain = NimbraDomains::identifier(".cpuinfo"),
        .rules = NIMModulePageKinds::informationToShow({
            {"showCPULoad", "loadParent", {"loadChild1", "loadChild2", "loadChild3"}},
            {"showNumberOfRunningTasks", "tasksParent", {"tasksChild"}},
            {"showNumberOfActiveCPUCores", "coresParent", {"coresChild"}},
            {"showCPUTemperature", "temperatureParent", {"temperatureChild"}},
        }),
        .actions = {
            {"saveTextCell", PageActions::saveTextCell()},
        },
    };
    return page;
}
