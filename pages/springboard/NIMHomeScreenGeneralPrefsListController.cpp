// Home Screen > General: icon scale, hidden apps (their picker shows while hiding is on) and the
// download progress bar with its colour.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMAppPicker.h"
#include "storage/NimbraDomains.h"

NIM_PAGE(NIMHomeScreenGeneralPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMHomeScreenGeneralPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/HomeScreenGeneral",
        .domain = NimbraDomains::identifier(".homescreen"),
        .fixesColorRows = true,
        .rules = {
            when("enableCustomHomeScreenIconsScale", Condition::on()).editedBy("iconsScaleParent").chain({"iconsScaleChild"}, "iconsScaleParent"),
            when("hideAppIcons", Condition::on()).editedBy("hideAppsParent").chain({"hideAppsChild"}, "hideAppsParent"),
            when("progressBarWhenDownloading", Condition::on()).editedBy("customProgressBarParent")
                .chain({"customProgressBarChild"}, "customProgressBarParent").nests({"enableCustomProgressBarColor"}),
            when("enableCustomProgressBarColor", Condition::on()).editedBy("customProgressBarChild")
                .chain({"customProgressBarGrandChild"}, "customProgressBarChild"),
        },
        .actions = {
            {"selectAppsToHide", NIMAppPicker::action(NimbraDomains::hiddenApps(".homescreen"), "hiddenApps", NIMAppPicker::Limit::AnyNumber)},
        },
    };
    return page;
}
