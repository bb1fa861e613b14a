// Home Screen: the group's master switch over its options and pages, and the group's resets (the
// settings reset also empties the renamed- and hidden-apps stores).
//
// Before iOS 14 the row "topLevelChild4" does not apply and is shown greyed out.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "platform/Process.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

class NIMHomeScreenRootPrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMHomeScreenRootPrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

protected:
    void prune(HBPreferences& preferences) override;
};

NIM_REGISTER_PAGE(NIMHomeScreenRootPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMHomeScreenRootPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/HomeScreenRoot",
        .domain = NimbraDomains::identifier(".homescreen"),
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 14), "topLevelSwitch"),
        },
        .actions = {
            {"resetSettings", confirmedReset(groupSettingsReset("Home Screen", ".homescreen", {".renamedApps", ".hiddenApps"}, false))},
            {"resetColors", confirmedReset(groupColorsReset("Home Screen", ".homescreen"))},
        },
    };
    return page;
}

void NIMHomeScreenRootPrefsListController::prune(HBPreferences& preferences)
{
    NIMGeneralListControllerWithRespringButton::prune(preferences);
    if (Process::current().coreFoundationVersion() < 1740.0)
        if (auto row = specifierForID("topLevelChild4"))
            row->setProperty(PlistValue(false), "enabled");
}
