#include "frame/NIMPageKinds.h"

namespace NIMPageKinds {

std::vector<CollapsibleGroupRule> switches(const std::vector<Switch>& items)
{
    std::vector<CollapsibleGroupRule> rules;
    for (const Switch& item : items)
        rules.push_back(when(item.key, Condition::on()).editedBy(item.row).chain(item.children, item.row));
    return rules;
}

std::vector<CollapsibleGroupRule> timeLabel(const std::string& prefix, int children, bool gestures)
{
    std::vector<CollapsibleGroupRule> rules{
        when(prefix + "EnableSecondString", Condition::on()).editedBy("topLevelSwitch")
            .chain(numbered("topLevelChild%d", 1, children), "topLevelSwitch"),
    };
    std::vector<Switch> more{{prefix + "CustomTextColorEnabled", "customColorParent", {"customColorChild"}}};
    if (gestures) {
        more.push_back({prefix + "EnableDoubleTap", "doubleTapParent", {"doubleTapChild"}});
        more.push_back({prefix + "EnableHold", "holdParent", {"holdChild"}});
    }
    for (auto& rule : switches(more))
        rules.push_back(std::move(rule));
    return rules;
}

}  // namespace NIMPageKinds
