// Settings > Organization: groups the Settings app's rows into tweaks, system apps and App Store apps.
//
// The master switch re-applies the rules of its options; each does nothing when its first row is
// already shown.

#include "frame/NIMStockAppListController.h"
#include "frame/PageActions.h"
#include "storage/NimbraDomains.h"

NIM_APP_PAGE(NIMSettingsOrganizationPrefsListController, "Settings", "com.apple.Preferences");

const PageDescription& NIMSettingsOrganizationPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SystemApps/SettingsOrganization",
        .domain = NimbraDomains::identifier(".settings"),
        .rules = {
            when("organizeSettings", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 12), "topLevelSwitch")
                .nests({"organizeTweaks", "organizeSystemApps", "organizeAppStoreApps"}),
            when("organizeTweaks", Condition::on()).editedBy("topLevelChild8").chain({"tweaksChild"}, "topLevelChild8")
                .guardedAlsoWhenNested(),
            when("organizeSystemApps", Condition::on()).editedBy("topLevelChild10").chain({"systemAppsChild"}, "topLevelChild10")
                .guardedAlsoWhenNested(),
            when("organizeAppStoreApps", Condition::on()).editedBy("topLevelChild12").chain({"appStoreAppsChild"}, "topLevelChild12")
                .guardedAlsoWhenNested(),
        },
        .actions = {
            {"saveTextCell:", PageActions::saveTextCell()},
        },
    };
    return page;
}
