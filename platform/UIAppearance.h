#pragma once
// UILabel's appearance proxy restricted to a container class
// ([UILabel appearanceWhenContainedInInstancesOfClasses:@[container]]): label styles set once for
// every label inside that kind of view, for the life of the process.

#include <map>
#include <optional>
#include <string>

struct UILabelAppearance {
    std::optional<int> numberOfLines;
    std::optional<double> minimumScaleFactor;
};

namespace UIAppearance {

/// The label appearance inside instances of the named container class (made on first use).
UILabelAppearance& labelWhenContainedIn(const std::string& containerClass);
/// Every container's label appearance set so far.
const std::map<std::string, UILabelAppearance>& labelAppearances();

}  // namespace UIAppearance
