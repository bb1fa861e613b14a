#pragma once
// The page kinds every overlay module's group is built from. Each returns the kind's rule table;
// a module's page states which kind it is, with its own bounds.

#include "frame/CollapsibleGroupRule.h"
#include "frame/NIMPageKinds.h"

#include <string>
#include <vector>

namespace NIMModulePageKinds {

/// Root: the module's master switch "enabled" shows "topLevelChild1" .. N, chained from
/// "topLevelSwitch"; the whole chain is skipped while "topLevelChild1" is shown.
std::vector<CollapsibleGroupRule> root(int children);

/// Visibility: "visibility" (its selector is "topLevelSwitch") shows "topLevelChild1" .. N for every
/// value but 1, then "topLevelChild1Child" when the row "topLevelChild1" ("showOnLockScreen") is on
/// and the blacklist child "topLevelChild<N>Child" when the row "topLevelChild<N>"
/// ("enableBlackListedApps") is on. The reload deliberately disagrees: it hides them all for every
/// value below 2, so 0 hides them on opening while choosing 0 shows them.
std::vector<CollapsibleGroupRule> visibility(int children);

/// Location: "followDeviceOrientation" shows "topLevelChild" after "topLevelSwitch" and
/// "landscapeChild1" .. 4 chained from "landscapeParent", all skipped while "topLevelChild" is shown.
std::vector<CollapsibleGroupRule> location();

/// A single colour switch: key shows "topLevelChild" after "topLevelParent".
std::vector<CollapsibleGroupRule> singleColor(const std::string& key);

/// Colour switches named after their rows: "<name>ColorEnabled" shows "<name>Child" after
/// "<name>Parent", for each name in order ("charging", "lpm", ...).
std::vector<CollapsibleGroupRule> colorSwitches(const std::vector<std::string>& names);

/// Actions: "enableDoubleTap" shows "doubleTapChild" after "doubleTapParent", "enableHold" shows
/// "holdChild" after "holdParent".
std::vector<CollapsibleGroupRule> actions();

/// A banner element with a colour type (Tovin's app name, title and message): the show key (on
/// unless stored) shows "topLevelChild1" .. 4 from "topLevelSwitch", and the custom colour
/// "colorChild" after "topLevelChild4" (the colour-type selector) when that row is 2; the selector
/// itself shows the colour for every type but 1; the reload hides it only for type 1 (the default).
std::vector<CollapsibleGroupRule> bannerElement(const std::string& showKey, const std::string& colorTypeKey);

/// One switch per piece of information: "<key>" shows its children chained from its parent.
std::vector<CollapsibleGroupRule> informationToShow(const std::vector<NIMPageKinds::Switch>& items);

}  // namespace NIMModulePageKinds
