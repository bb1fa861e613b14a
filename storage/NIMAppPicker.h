#pragma once
// The app-picker action of a page: pushes libsparkapplist's picker for one app-list store and key.
// The picker reads and writes the store itself; the page does nothing when it returns.

#include "frame/PageDescription.h"

#include <optional>
#include <string>

namespace NIMAppPicker {

enum class Limit { AnyNumber, SingleApp };

/// The picker an action opens: its store, key and limit.
struct Push {
    std::string storeIdentifier;
    std::string key;
    Limit limit = Limit::AnyNumber;

    void operator()(NIMCollapsibleListController& page) const;
};

/// Creates the picker (initWithIdentifier:andKey:), limits it to one app for a single-app picker
/// (setMaxEnabled: 1), pushes it on the page's navigation controller, animated, and keeps the
/// page's back button visible (setHidesBackButton: NO).
PageAction action(std::string storeIdentifier, std::string key, Limit limit);

/// How many apps the picker an action opens has chosen, as stored; nothing when the action opens
/// no app picker.
std::optional<std::size_t> chosenCount(const PageAction& action);

}  // namespace NIMAppPicker
