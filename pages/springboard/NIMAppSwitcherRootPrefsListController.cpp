// App Switcher: the group's master switch over its options, the kill-all-apps gestures (the
// kill-all row belongs to both, and stays while either is on), the custom layout's page, and the
// settings reset.

#include "frame/NIMGeneralListControllerWithRespringButton.h"
#include "frame/NIMPageCatalog.h"
#include "storage/NIMReset.h"
#include "storage/NimbraDomains.h"

class NIMAppSwitcherRootPrefsListController : public NIMGeneralListControllerWithRespringButton {
public:
    NIMAppSwitcherRootPrefsListController() : NIMGeneralListControllerWithRespringButton(description()) {}
    static const PageDescription& description();

protected:
    void valueChanged(const std::string& key, const PlistValue& value) override;
    void prune(HBPreferences& preferences) override;
};

NIM_REGISTER_PAGE(NIMAppSwitcherRootPrefsListController, NIMGeneralListControllerWithRespringButton);

const PageDescription& NIMAppSwitcherRootPrefsListController::description()
{
    static const PageDescription page{
        .definition = "pages/SpringBoard/AppSwitcherRoot",
        .domain = NimbraDomains::identifier(".appswitcher"),
        .rules = {
            when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 14), "topLevelSwitch")
                .hiding(numbered("topLevelChild%d", 1, 14) + std::vector<std::string>{"swipeDownChild", "killAllChild", "customLayoutChild"}),
            when("swipeDownToKillAllApps", Condition::on()).editedBy("topLevelChild12").place("swipeDownChild", "topLevelChild12")
                .place("killAllChild", "swipeDownChild"),
            when("longPressToKillAllApps", Condition::on()).editedBy("topLevelChild11").place("killAllChild", "topLevelChild12"),
            when("enableCustomSwitcherLayout", Condition::on()).editedBy("topLevelChild14").chain({"customLayoutChild"}, "topLevelChild14"),
        },
        .actions = {
            {"resetSettings", confirmedReset(groupSettingsReset("App Switcher", ".appswitcher", {}))},
        },
    };
    return page;
}

void NIMAppSwitcherRootPrefsListController::valueChanged(const std::string& key, const PlistValue& value)
{
    bool on = value.boolValue();
    if (key == "swipeDownToKillAllApps") {
        if (on) {
            if (!isShown("swipeDownChild"))
                insert("swipeDownChild", "topLevelChild12");
            if (!isShown("killAllChild"))
                insert("killAllChild", "swipeDownChild");
            return;
        }
        remove({"swipeDownChild"});
        if (!valueOfRow("topLevelChild11").boolValue())
            remove({"killAllChild"});
    } else if (key == "longPressToKillAllApps") {
        if (on) {
            if (!isShown("killAllChild"))
                insert("killAllChild", isShown("swipeDownChild") ? "swipeDownChild" : "topLevelChild12");
            return;
        }
        if (!valueOfRow("topLevelChild12").boolValue())
            remove({"killAllChild"});
    } else if (key == "enabled" && on) {
        // The options' own rows follow the values of their saved rows, as the switches would show
        // them; each goes in only when it is not shown already (a reload with the master switch
        // off keeps them).
        if (!show(rule("enabled")))
            return;
        if (valueOfRow("topLevelChild12").boolValue())
            valueChanged("swipeDownToKillAllApps", PlistValue(true));
        if (valueOfRow("topLevelChild11").boolValue())
            valueChanged("longPressToKillAllApps", PlistValue(true));
        if (valueOfRow("topLevelChild14").boolValue())
            show(rule("enableCustomSwitcherLayout"));
    } else {
        NIMGeneralListControllerWithRespringButton::valueChanged(key, value);
    }
}

void NIMAppSwitcherRootPrefsListController::prune(HBPreferences& preferences)
{
    if (!preferences.boolForKey("enabled"))
        remove(numbered("topLevelChild%d", 1, 14), false);
    if (!preferences.boolForKey("longPressToKillAllApps") && !preferences.boolForKey("swipeDownToKillAllApps"))
        remove({"killAllChild"}, false);
    if (!preferences.boolForKey("swipeDownToKillAllApps"))
        remove({"swipeDownChild"}, false);
    if (!preferences.boolForKey("enableCustomSwitcherLayout"))
        remove({"customLayoutChild"}, false);
}
