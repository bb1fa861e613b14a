// System: the group's master switch over appearance and orientation per app, cursor, home bar,
// screenshot flash, scroll bars, status bar, switches, tab bar and table cells, a test alert, six
// app lists and the group's resets (the app lists survive the settings reset).
//
// Every single row is inserted only when it is not shown yet, also when the master switch brings
// back the rows its options govern.
//
// Switching the group off removes every row with an animation except "modernCellsChild", which
// goes without one; kept as it is.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "frame/PageActions.h"
#include "storage/NIMAppPicker.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

class NIMSystemRootPrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMSystemRootPrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

protected:
    void valueChanged(const std::string& key, const PlistValue& value) override;
};

NIM_REGISTER_PAGE(NIMSystemRootPrefsListController, NIMGeneralListControllerWithRespringButton);

namespace {

PageAction appList(const char* key)
{
    return NIMAppPicker::action(NimbraDomains::systemApps(), key, NIMAppPicker::Limit::AnyNumber);
}

CollapsibleGroupRule single(const char* key, const char* row, const char* child)
{
    return when(key, Condition::on()).editedBy(row).chain({child}, row).guardedAlsoWhenNested();
}

}  // namespace

const PageDescription& NIMSystemRootPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/System/SystemRoot",
        .domain = NimbraDomains::identifier(".system"),
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 41), "topLevelSwitch")
                .nests({"enableLightModeOnlyApps", "enableDarkModeOnlyApps", "enablePortraitModeOnlyApps",
                        "enableLandscapeModeOnlyApps", "customCursorColor", "hideHomeBar", "hideScreenshotFlash", "scrollBarsStyle",
                        "hideStatusBarOnSelectedApps", "enableCustomSwitchesBGColor", "enableCustomSwitchesThumbColor",
                        "adjustTabBarPadding", "enableModernCells", "enabledAnimatedTableCells"}),
            single("enableLightModeOnlyApps", "topLevelChild2", "lightModeOnlyChild"),
            single("enableDarkModeOnlyApps", "topLevelChild3", "darkModeOnlyChild"),
            single("enablePortraitModeOnlyApps", "topLevelChild5", "portraitModeOnlyChild"),
            single("enableLandscapeModeOnlyApps", "topLevelChild6", "landscapeModeOnlyChild"),
            single("customCursorColor", "topLevelChild14", "cursorChild"),
            when("hideHomeBar", Condition::off()).editedBy("topLevelChild18").chain({"homeBarChild"}, "topLevelChild18")
                .guardedAlsoWhenNested(),
            when("hideScreenshotFlash", Condition::off()).editedBy("topLevelChild22").chain({"flashColorParent"}, "topLevelChild22")
                .nests({"enableCustomFlashColor"}).guardedAlsoWhenNested(),
            when("enableCustomFlashColor", Condition::on()).editedBy("flashColorParent")
                .chain({"flashColorLight", "flashColorDark"}, "flashColorParent"),
            when("scrollBarsStyle", Condition::notEqual(2)).editedBy("topLevelChild24").chain({"scrollBarsChild"}, "topLevelChild24")
                .nests({"enableCustomScrollBarColor"}).guardedAlsoWhenNested(),
            single("enableCustomScrollBarColor", "scrollBarsChild", "scrollBarsGrandChild"),
            single("hideStatusBarOnSelectedApps", "topLevelChild27", "hideStatusBarChild"),
            single("enableCustomSwitchesBGColor", "topLevelChild29", "switchesBGChild"),
            single("enableCustomSwitchesThumbColor", "topLevelChild30", "switchesThumbChild"),
            single("adjustTabBarPadding", "topLevelChild33", "tabBarChild"),
            single("enableModernCells", "topLevelChild35", "modernCellsChild"),
            single("enabledAnimatedTableCells", "topLevelChild37", "animatedTableCellsChild"),
        },
        .actions = {
            {"showTestAlert", PageActions::showAlert("Test Alert", {{"OK", UIAlertActionStyle::Default}, {"Cancel", UIAlertActionStyle::Cancel}})},
            {"selectAlwaysLightModeApps", appList("lightApps")},
            {"selectAlwaysDarkModeApps", appList("darkApps")},
            {"selectAlwaysPortraitModeApps", appList("portraitApps")},
            {"selectAlwaysLandscapeModeApps", appList("landscapeApps")},
            {"selectAppsToHideStatusBar", appList("hideStatusBarApps")},
            {"selectModernCellsApps", appList("modernCellsApps")},
            {"resetSettings", confirmedReset(groupSettingsReset("System", ".system", {}))},
            {"resetColors", confirmedReset(groupColorsReset("System", ".system"))},
        },
    };
    return page;
}

void NIMSystemRootPrefsListController::valueChanged(const std::string& key, const PlistValue& value)
{
    if (key != "enabled" || value.boolValue()) {
        NIMGeneralListControllerWithRespringButton::valueChanged(key, value);
        return;
    }
    for (const std::string& id : page().hiddenBy(rule("enabled")))
        remove({id}, id != "modernCellsChild");
}
