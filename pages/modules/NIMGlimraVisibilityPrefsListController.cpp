// Glimra > Visibility: where the edge lighting shows, and the apps it stays away from.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMModulePageKinds.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMAppPicker.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMGlimraVisibilityPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMGlimraVisibilityPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/Modules/GlimraVisibility",
        .domain = NimbraDomains::identifier(".glimra"),
        .rules = NIMModulePageKinds::visibility(7),
        .actions = {
            {"selectBlackListedApps", NIMAppPicker::action(NimbraDomains::blackListedApps(".glimra"), "blackListedApps", NIMAppPicker::Limit::AnyNumber)},
        },
    };
    return page;
}
