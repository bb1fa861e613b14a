#pragma once
// Rule shapes that pages of several groups share.

#include "frame/CollapsibleGroupRule.h"

#include <string>
#include <vector>

namespace NIMPageKinds {

/// A switch that shows its rows, chained from the switch's own row.
struct Switch {
    std::string key;
    std::string row;
    std::vector<std::string> children;
};
/// One independent rule per switch: on inserts the children after the switch's row (guarded on
/// the first), off removes them; the reload removes the children of every switch that is off.
std::vector<CollapsibleGroupRule> switches(const std::vector<Switch>& items);

/// The time label pages: prefix + "EnableSecondString" shows "topLevelChild1" .. N chained from
/// "topLevelSwitch"; prefix + "CustomTextColorEnabled" shows "customColorChild" after
/// "customColorParent"; with gestures, prefix + "EnableDoubleTap" and prefix + "EnableHold" show
/// "doubleTapChild" and "holdChild" after their parents.
std::vector<CollapsibleGroupRule> timeLabel(const std::string& prefix, int children, bool gestures);

}  // namespace NIMPageKinds
