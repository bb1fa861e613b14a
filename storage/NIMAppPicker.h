#pragma once
// The app-picker action of a page: pushes libsparkapplist's picker for one app-list store and key.
// The picker reads and writes the store itself; the page does nothing when it returns.

#include "frame/PageDescription.h"

#include <string>

namespace NIMAppPicker {

enum class Limit { AnyNumber, SingleApp };

/// Creates the picker (initWithIdentifier:andKey:), limits it to one app for a single-app picker
/// (setMaxEnabled: 1), pushes it on the page's navigation controller, animated, and keeps the
/// page's back button visible (setHidesBackButton: NO).
PageAction action(std::string storeIdentifier, std::string key, Limit limit);

}  // namespace NIMAppPicker
