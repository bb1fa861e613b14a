#include "frame/NIMModulePageKinds.h"

#include "frame/NIMPageKinds.h"

namespace NIMModulePageKinds {

std::vector<CollapsibleGroupRule> root(int children)
{
    return {when("enabled", Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, children), "topLevelSwitch")};
}

std::vector<CollapsibleGroupRule> visibility(int children)
{
    std::string blacklistSwitch = "topLevelChild" + std::to_string(children);
    std::string blacklistChild = blacklistSwitch + "Child";
    return {
        when("visibility", Condition::notEqual(1))
            .editedBy("topLevelSwitch")
            .chain(numbered("topLevelChild%d", 1, children), "topLevelSwitch")
            .nests({"showOnLockScreen", "enableBlackListedApps"})
            .reloadRemovingWhen(Condition::below(2)),
        when("showOnLockScreen", Condition::on()).editedBy("topLevelChild1").chain({"topLevelChild1Child"}, "topLevelChild1"),
        when("enableBlackListedApps", Condition::on()).editedBy(blacklistSwitch).chain({blacklistChild}, blacklistSwitch),
    };
}

std::vector<CollapsibleGroupRule> location()
{
    return {when("followDeviceOrientation", Condition::on())
                .editedBy("topLevelSwitch")
                .place("topLevelChild", "topLevelSwitch")
                .chain(numbered("landscapeChild%d", 1, 4), "landscapeParent")};
}

std::vector<CollapsibleGroupRule> singleColor(const std::string& key)
{
    return {when(key, Condition::on()).editedBy("topLevelParent").chain({"topLevelChild"}, "topLevelParent")};
}

std::vector<CollapsibleGroupRule> colorSwitches(const std::vector<std::string>& names)
{
    std::vector<CollapsibleGroupRule> rules;
    for (const std::string& name : names)
        rules.push_back(when(name + "ColorEnabled", Condition::on()).editedBy(name + "Parent").chain({name + "Child"}, name + "Parent"));
    return rules;
}

std::vector<CollapsibleGroupRule> actions()
{
    return {
        when("enableDoubleTap", Condition::on()).editedBy("doubleTapParent").chain({"doubleTapChild"}, "doubleTapParent"),
        when("enableHold", Condition::on()).editedBy("holdParent").chain({"holdChild"}, "holdParent"),
    };
}

std::vector<CollapsibleGroupRule> bannerElement(const std::string& showKey, const std::string& colorTypeKey)
{
    return {
        when(showKey, Condition::on()).editedBy("topLevelSwitch").chain(numbered("topLevelChild%d", 1, 4), "topLevelSwitch")
            .nests({"customColor"}).reloadDefaulting(PlistValue(true)),
        when(colorTypeKey, Condition::notEqual(1)).editedBy("topLevelChild4").chain({"colorChild"}, "topLevelChild4")
            .reloadDefaulting(PlistValue(1)),
        when(colorTypeKey, Condition::equal(2)).named("customColor").editedBy("topLevelChild4").chain({"colorChild"}, "topLevelChild4")
            .notReloaded(),
    };
}

std::vector<CollapsibleGroupRule> informationToShow(const std::vector<NIMPageKinds::Switch>& items)
{
    return NIMPageKinds::switches(items);
}

}  // namespace NIMModulePageKinds
